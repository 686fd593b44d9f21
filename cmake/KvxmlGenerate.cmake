# Classes from schemas, as a library of their own.
#
#     find_package(kvxml REQUIRED)
#     kvxml_generate(TARGET order_types SCHEMAS orders.xsd)
#     target_link_libraries(my_program PRIVATE order_types)
#
# kvxml_generate(TARGET name SCHEMAS file... [NAME stem] [NAMESPACES URI=A::B...] [PARTS n] [OPTIONS option...])
#   TARGET      the library; its folder of headers goes to those who link it
#   SCHEMAS     root documents; what they include and import is found from them, and a change in any of them
#               makes the classes anew
#   NAME        name of the files, stem.h and so on; otherwise that of the first schema
#   NAMESPACES  namespaces of C++ for target namespaces
#   PARTS       number of sources, for schemas of hundreds of types (default 1)
#   OPTIONS     further options of `kvxml generate`
#
# KVXML_GENERATE_EXECUTABLE names the kvxml command to run; when cross-compiling, one that runs on this host.
function(kvxml_generate)
  cmake_parse_arguments(PARSE_ARGV 0 arg "" "TARGET;NAME;PARTS" "SCHEMAS;NAMESPACES;OPTIONS")
  if(arg_UNPARSED_ARGUMENTS OR NOT arg_TARGET OR NOT arg_SCHEMAS)
    message(FATAL_ERROR "kvxml_generate(TARGET name SCHEMAS file... [NAME stem] [NAMESPACES URI=A::B...] "
                        "[PARTS n] [OPTIONS option...]): bad arguments ${arg_UNPARSED_ARGUMENTS}")
  endif()

  set(schemas)
  foreach(schema IN LISTS arg_SCHEMAS)
    cmake_path(ABSOLUTE_PATH schema BASE_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR} NORMALIZE)
    list(APPEND schemas ${schema})
  endforeach()
  if(NOT arg_NAME)
    list(GET schemas 0 first)
    cmake_path(GET first STEM LAST_ONLY arg_NAME)
  endif()
  if(NOT arg_PARTS)
    set(arg_PARTS 1)
  endif()

  set(depends ${schemas})
  if(KVXML_GENERATE_EXECUTABLE)
    set(command ${KVXML_GENERATE_EXECUTABLE})
  elseif(CMAKE_CROSSCOMPILING)
    message(FATAL_ERROR "kvxml_generate: set KVXML_GENERATE_EXECUTABLE to a kvxml command of this host")
  elseif(TARGET kvxml-tool)
    set(command kvxml-tool)
    list(APPEND depends kvxml-tool)
  elseif(TARGET kvxml::tool)
    set(command kvxml::tool)
  else()
    message(FATAL_ERROR "kvxml_generate: there is no kvxml command; set KVXML_BUILD_TOOLS where kvxml is a subdirectory, "
                        "or KVXML_GENERATE_EXECUTABLE")
  endif()

  set(folder ${CMAKE_CURRENT_BINARY_DIR}/${arg_TARGET})
  set(headers ${folder}/${arg_NAME}_fwd.h ${folder}/${arg_NAME}.h)
  set(sources ${folder}/${arg_NAME}.cpp)
  if(arg_PARTS GREATER 1)
    foreach(part RANGE 2 ${arg_PARTS})
      list(APPEND sources ${folder}/${arg_NAME}_${part}.cpp)
    endforeach()
  endif()
  set(options --name ${arg_NAME} --parts ${arg_PARTS})
  foreach(namespace IN LISTS arg_NAMESPACES)
    list(APPEND options --namespace ${namespace})
  endforeach()

  add_custom_command(
    OUTPUT ${headers} ${sources}  # the first is the first target of the depfile
    COMMAND ${command} generate --output ${folder} --depfile ${folder}/${arg_NAME}.d ${options} ${arg_OPTIONS}
            ${schemas}
    DEPENDS ${depends}
    DEPFILE ${folder}/${arg_NAME}.d
    COMMENT "Generating ${arg_TARGET} from ${arg_NAME}"
    VERBATIM)
  add_library(${arg_TARGET} STATIC ${sources} ${headers})
  target_include_directories(${arg_TARGET} PUBLIC $<BUILD_INTERFACE:${folder}>)
  target_compile_features(${arg_TARGET} PUBLIC cxx_std_17)
  target_link_libraries(${arg_TARGET} PUBLIC kvxml::kvxml)
  set_target_properties(${arg_TARGET} PROPERTIES POSITION_INDEPENDENT_CODE ON)
endfunction()
