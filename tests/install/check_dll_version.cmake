# The built DLL's version resource, read by the built kqhost (which loads bin/amiga.dll).
include(${CMAKE_CURRENT_LIST_DIR}/dll_version.cmake)
kq_check_dll_version(${KQHOST} ${WINE_RUN} ${VERSION} ${EXPECTED_DLL})
message(STATUS "amiga.dll carries version ${VERSION}")
