/// Where documents are read from.
#pragma once

#include <string>
#include <vector>

namespace tool {

/// Whether the name stands for standard input.
bool IsStandardInput(const std::string& name);
/// "standard input" or the name, as messages call it.
std::string InputName(const std::string& name);

/// All that comes on standard input. CFailure when it cannot be read.
std::vector<unsigned char> ReadStandardInput();
/// All that a file or pipe gives. CFailure when it cannot be read.
std::vector<unsigned char> ReadAll(const std::string& fileName);
/// Whether reading it again gives the same: not of pipes and devices.
bool IsRegularFile(const std::string& fileName);
/// CFailure with what the host says where the file cannot be opened for reading, or is a folder.
void CheckFile(const std::string& fileName);

}  // namespace tool
