# Runs a program and checks its exit status, for tests that expect another one than 0:
#
#     cmake -DEXPECTED=2 -P expect_status.cmake -- program argument...
set(command)
set(after_separator FALSE)
math(EXPR last "${CMAKE_ARGC} - 1")
foreach(index RANGE ${last})
  if(after_separator)
    list(APPEND command "${CMAKE_ARGV${index}}")
  elseif(CMAKE_ARGV${index} STREQUAL "--")
    set(after_separator TRUE)
  endif()
endforeach()
execute_process(COMMAND ${command} RESULT_VARIABLE status)
if(NOT "${status}" STREQUAL "${EXPECTED}")
  message(FATAL_ERROR "ended with ${status}, expected was ${EXPECTED}")
endif()
