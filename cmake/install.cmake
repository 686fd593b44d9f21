# Install rules: library, public headers, documentation, CMake package and pkg-config file.
include(CMakePackageConfigHelpers)

set(KVXML_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/kvxml)

install(TARGETS kvxml kvxml-schema EXPORT kvxmlTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/kvxml/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/kvxml
        FILES_MATCHING PATTERN "*.h" PATTERN "internal" EXCLUDE)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR}
        FILES_MATCHING PATTERN "*.md" PATTERN "man" EXCLUDE)

# --- find_package(kvxml) -----------------------------------------------------------------------
install(EXPORT kvxmlTargets NAMESPACE kvxml:: DESTINATION ${KVXML_CMAKE_DIR})
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/kvxmlConfig.cmake.in
                              ${PROJECT_BINARY_DIR}/kvxmlConfig.cmake
                              INSTALL_DESTINATION ${KVXML_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/kvxmlConfigVersion.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/kvxmlConfig.cmake ${PROJECT_BINARY_DIR}/kvxmlConfigVersion.cmake
              ${CMAKE_CURRENT_LIST_DIR}/KvxmlGenerate.cmake
        DESTINATION ${KVXML_CMAKE_DIR})

# --- pkg-config --------------------------------------------------------------------------------
# The prefix is found from the place of the .pc file, so an installed tree can be moved.
if(IS_ABSOLUTE ${CMAKE_INSTALL_LIBDIR})
  set(KVXML_PC_PREFIX ${CMAKE_INSTALL_PREFIX})
  set(KVXML_PC_LIBDIR ${CMAKE_INSTALL_LIBDIR})
else()
  file(RELATIVE_PATH KVXML_PC_UP /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
  string(REGEX REPLACE "/$" "" KVXML_PC_UP "${KVXML_PC_UP}")
  set(KVXML_PC_PREFIX "\${pcfiledir}/${KVXML_PC_UP}")
  set(KVXML_PC_LIBDIR "\${prefix}/${CMAKE_INSTALL_LIBDIR}")
endif()
if(IS_ABSOLUTE ${CMAKE_INSTALL_INCLUDEDIR})
  set(KVXML_PC_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR})
else()
  set(KVXML_PC_INCLUDEDIR "\${prefix}/${CMAKE_INSTALL_INCLUDEDIR}")
endif()
# A shared kvxml hides what it is linked with; who links the static one needs it all (pkg-config --static).
set(KVXML_PC_REQUIRES_PRIVATE)
set(KVXML_PC_LIBS_PRIVATE)
set(KVXML_PC_CFLAGS)
if(NOT BUILD_SHARED_LIBS)
  set(KVXML_PC_REQUIRES_PRIVATE "expat zlib libpcre2-8")
  if(NOT Iconv_IS_BUILT_IN)
    set(KVXML_PC_LIBS_PRIVATE "-liconv ")
  endif()
  foreach(library IN LISTS CMAKE_CXX_IMPLICIT_LINK_LIBRARIES)
    if(library MATCHES "^(stdc\\+\\+|c\\+\\+|m)$")
      string(APPEND KVXML_PC_LIBS_PRIVATE "-l${library} ")
    endif()
  endforeach()
  string(STRIP "${KVXML_PC_LIBS_PRIVATE}" KVXML_PC_LIBS_PRIVATE)
  set(KVXML_PC_CFLAGS " -DKVXML_STATIC")
endif()
configure_file(${CMAKE_CURRENT_LIST_DIR}/kvxml.pc.in ${PROJECT_BINARY_DIR}/kvxml.pc @ONLY)
configure_file(${CMAKE_CURRENT_LIST_DIR}/kvxml-schema.pc.in ${PROJECT_BINARY_DIR}/kvxml-schema.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/kvxml.pc ${PROJECT_BINARY_DIR}/kvxml-schema.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
