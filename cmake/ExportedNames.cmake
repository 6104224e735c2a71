# Writes the linker's version script: every function that header declares with QM_API is exported, nothing else is.
function(qumel_write_version_script header script)
  file(READ ${header} text)
  string(REGEX MATCHALL "QM_API [^;(]*[ *]([A-Za-z_0-9]+)\\(" declarations "${text}")
  list(TRANSFORM declarations REPLACE "^.*[ *]([A-Za-z_0-9]+)\\($" "    \\1")
  list(JOIN declarations ";\n" names)
  file(CONFIGURE OUTPUT ${script} CONTENT "{\n  global:\n${names};\n  local:\n    *;\n};\n" @ONLY)
endfunction()
