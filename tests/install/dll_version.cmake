# kq_check_dll_version(<kqhost.exe> <wine-run.sh> <version> <expected DLL path>): runs
# "kqhost version" under Wine and checks that it loaded the expected DLL and that the DLL's
# version resource carries <version> (fixed versions as major.minor.patch.0, the strings as
# given) and names amiga.dll.
function(kq_check_dll_version kqhost wine_run version expected_dll)
  execute_process(COMMAND ${wine_run} ${kqhost} version
                  RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE errors)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "kqhost version failed (${result}):\n${output}${errors}")
  endif()
  string(REGEX MATCH "Module: ([^\n]*)\n" module_line "${output}")
  set(module "${CMAKE_MATCH_1}")
  # Wine names the Unix path Z:\... with backslashes.
  string(REPLACE "/" "\\" expected_windows "${expected_dll}")
  string(TOLOWER "Z:${expected_windows}" expected_windows)
  string(TOLOWER "${module}" module_lower)
  if(NOT module_lower STREQUAL expected_windows)
    message(FATAL_ERROR "kqhost loaded '${module}', expected '${expected_dll}'")
  endif()

  string(REGEX MATCH "^([0-9]+)\\.([0-9]+)\\.([0-9]+)$" parts "${version}")
  if(NOT parts)
    message(FATAL_ERROR "the project version '${version}' is not major.minor.patch")
  endif()
  set(fixed "${version}.0")
  foreach(line IN ITEMS "Fixed file version: ${fixed}" "Fixed product version: ${fixed}"
                        "FileVersion: ${version}" "ProductVersion: ${version}"
                        "OriginalFilename: amiga.dll")
    string(FIND "${output}" "\n${line}\n" at)
    if(at EQUAL -1)
      message(FATAL_ERROR "no line '${line}' in the output of kqhost version:\n${output}")
    endif()
  endforeach()
  foreach(name IN ITEMS CompanyName ProductName FileDescription)
    if(NOT output MATCHES "\n${name}: [^\n(][^\n]*\n")
      message(FATAL_ERROR "no ${name} in the version resource:\n${output}")
    endif()
  endforeach()
endfunction()
