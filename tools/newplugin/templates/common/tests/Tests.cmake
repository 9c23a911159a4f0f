# Tests of the plug-in PLUGIN_FILE with the installed tools.
find_program(VEXIL vexil REQUIRED)
find_program(VEXIL_LINT vexil-lint REQUIRED)

# The plug-in has none of the mistakes that vexil-lint knows.
add_test(NAME lint COMMAND ${VEXIL_LINT} ${PLUGIN_FILE})

# The output of the command in three formats equals the files in tests/golden.
foreach(format table json-utf8 xml)
  add_test(NAME golden.${format}
    COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/tests/check-golden.sh
            ${VEXIL} ${PLUGIN_FILE} ${format} ${CMAKE_CURRENT_SOURCE_DIR}/tests/golden)
endforeach()

# The commands in the README print what it says.
add_test(NAME readme
  COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/tests/check-readme.sh
          ${VEXIL} ${CMAKE_CURRENT_SOURCE_DIR}/README.md ${CMAKE_CURRENT_BINARY_DIR})
