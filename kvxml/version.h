/// Version of the library that these headers belong to.
#pragma once

#define KVXML_VERSION_MAJOR 16
#define KVXML_VERSION_MINOR 0
#define KVXML_VERSION_PATCH 0
#define KVXML_VERSION_STRING "16.0.0"
