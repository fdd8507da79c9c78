# Fails naming every #include that points the wrong way. Each row: a folder of
# src/, then a regular expression of the project headers it must not include.
# shell/program.h (the Program's state) is open to everyone; the rest of the
# shell is the top.
set(shell_top "shell/(command|commands|startup)\\.h")
set(writers "pronto/|slinke/|adi/|details/|lirc/|export/")
set(rules
  "runtime|^(input|protocol|generate|jet|shell|${writers})"
  "jet|^(input|protocol|generate|shell|${writers})"
  "input|^(generate/generate\\.h|jet/|${shell_top}|${writers})"
  "protocol|^(generate/generate\\.h|jet/|${shell_top}|${writers})"
  "generate|^(jet/|${shell_top}|${writers})"
  "pronto|^(${shell_top}|lirc/|export/)"
  "slinke|^(jet/|${shell_top}|lirc/|export/)"
  "adi|^(jet/|${shell_top}|lirc/|export/)"
  "details|^(jet/|${shell_top}|slinke/|adi/|lirc/|export/)"
  "lirc|^(jet/|${shell_top}|export/|pronto/|slinke/|adi/|details/)"
  "export|^(jet/|${shell_top}|lirc/)")

set(wrong "")
foreach(rule IN LISTS rules)
  string(REPLACE "|" ";" parts "${rule}")
  list(GET parts 0 folder)
  string(LENGTH "${folder}|" skip)
  string(SUBSTRING "${rule}" ${skip} -1 forbidden)
  file(GLOB_RECURSE files "${SRC}/${folder}/*.h" "${SRC}/${folder}/*.cpp")
  foreach(file IN LISTS files)
    file(STRINGS "${file}" lines REGEX "^#include \"")
    foreach(line IN LISTS lines)
      string(REGEX REPLACE "^#include \"([^\"]+)\".*" "\\1" header "${line}")
      if(header MATCHES "${forbidden}")
        string(APPEND wrong "\n  ${file} includes ${header}")
      endif()
    endforeach()
  endforeach()
endforeach()

# The core is standard C++ only.
file(GLOB_RECURSE all "${SRC}/*.h" "${SRC}/*.cpp")
foreach(file IN LISTS all)
  file(STRINGS "${file}" lines REGEX "^#include <Q")
  foreach(line IN LISTS lines)
    string(APPEND wrong "\n  ${file}: ${line}")
  endforeach()
endforeach()

if(wrong)
  message(FATAL_ERROR "includes against the module order:${wrong}")
endif()
