# Builds the manual pages and the bash completion from vinora-cli's own command table, so that
# a command added to the tool appears in both without anything else to edit.
#   cmake -DCLI=vinora-cli -DSOURCE_DIR=data -DOUTPUT_DIR=out -DPROJECT_VERSION=1.0
#         -DRELEASE_DATE=YYYY-MM-DD -DCOMPONENTS_DIR=/usr/libexec/vinora -P GenerateCliDocs.cmake
# writes OUTPUT_DIR/vinora.1, OUTPUT_DIR/vinora-cli.1 and OUTPUT_DIR/vinora-cli (completion).

execute_process(COMMAND ${CLI} help --format=table
                OUTPUT_VARIABLE table RESULT_VARIABLE status)
if(NOT status EQUAL 0 OR table STREQUAL "")
  message(FATAL_ERROR "${CLI} help --format=table failed (${status})")
endif()

# Lines as a CMake list: semicolons and square brackets, which lists treat specially, stand in
# for each other until roff() puts them back.
function(split_lines out text)
  string(REPLACE ";" "__SC__" text "${text}")
  string(REPLACE "[" "__LB__" text "${text}")
  string(REPLACE "]" "__RB__" text "${text}")
  string(REGEX REPLACE "\n+$" "" text "${text}")
  string(REPLACE "\n" ";" text "${text}")
  set(${out} "${text}" PARENT_SCOPE)
endfunction()

# Plain text as roff: backslashes and hyphens escaped, semicolons and brackets restored.
function(roff out text)
  string(REPLACE "\\" "\\e" text "${text}")
  string(REPLACE "-" "\\-" text "${text}")
  string(REPLACE "__SC__" ";" text "${text}")
  string(REPLACE "__LB__" "[" text "${text}")
  string(REPLACE "__RB__" "]" text "${text}")
  set(${out} "${text}" PARENT_SCOPE)
endfunction()

# What the commands do, by name.
file(READ ${SOURCE_DIR}/man/vinora-cli-commands.txt prose)
split_lines(prose_lines "${prose}")
foreach(line IN LISTS prose_lines)
  if(line MATCHES "^([a-z][a-z0-9-]*)\t(.+)$")
    set("text_${CMAKE_MATCH_1}" "${CMAKE_MATCH_2}")
  endif()
endforeach()

# One tagged paragraph a command: its usage in bold and italics, then what it does.
set(commands "")
split_lines(table_lines "${table}")
foreach(line IN LISTS table_lines)
  if(NOT line MATCHES "^([^\t]+)\t(.*)$")
    message(FATAL_ERROR "unexpected line in the command table: ${line}")
  endif()
  set(name "${CMAKE_MATCH_1}")
  string(LENGTH "${name}" name_length)
  string(SUBSTRING "${CMAKE_MATCH_2}" ${name_length} -1 arguments)
  roff(name_roff "${name}")
  roff(arguments_roff "${arguments}")
  string(APPEND commands ".TP\n\\fBvinora\\-cli ${name_roff}\\fR${arguments_roff}\n")
  if(DEFINED "text_${name}")
    roff(text_roff "${text_${name}}")
    string(APPEND commands "${text_roff}\n")
  endif()
endforeach()
string(REGEX REPLACE "\n$" "" commands "${commands}")

set(VINORA_RELEASE_DATE ${RELEASE_DATE})
set(VINORA_COMPONENTS_DIR ${COMPONENTS_DIR})
file(READ ${SOURCE_DIR}/man/common.man common)
string(CONFIGURE "${common}" common @ONLY)
string(REGEX REPLACE "\n$" "" common "${common}")

foreach(page vinora vinora-cli)
  file(READ ${SOURCE_DIR}/man/${page}.1.in text)
  string(CONFIGURE "${text}" text @ONLY)
  string(REPLACE "%VINORA_COMMON_SECTIONS%" "${common}" text "${text}")
  string(REPLACE "%VINORA_CLI_COMMANDS%" "${commands}" text "${text}")
  file(WRITE ${OUTPUT_DIR}/${page}.1 "${text}")
endforeach()

file(READ ${SOURCE_DIR}/completion/vinora-cli.bash.in text)
string(REGEX REPLACE "\n+$" "" table "${table}")
string(REPLACE "%VINORA_CLI_TABLE%" "${table}" text "${text}")
file(WRITE ${OUTPUT_DIR}/vinora-cli "${text}")
