# What a host installs, laid out by `cmake --install` and zipped by CPack (generator ZIP):
#   Platforms/Amiga/amiga.dll and its blank-disk templates in Platforms/Amiga/Tessary
#   (exports/ and media/ install those), bin/kqhost.exe (kqhost/), which loads
#   ..\Platforms\Amiga\amiga.dll beside itself, the public header in include/, and README.md.
install(FILES ${PROJECT_SOURCE_DIR}/include/kq_amiga.h DESTINATION include)
install(FILES ${PROJECT_SOURCE_DIR}/README.md DESTINATION .)

set(CPACK_PACKAGE_NAME "kq_amiga")
set(CPACK_PACKAGE_VENDOR "Mervane")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Amiga platform module (amiga.dll) and its reference host")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_SYSTEM_NAME win64)
set(CPACK_PACKAGE_FILE_NAME "${CPACK_PACKAGE_NAME}-${CPACK_PACKAGE_VERSION}-${CPACK_SYSTEM_NAME}")
set(CPACK_GENERATOR ZIP)
# The archive holds the tree itself, without a folder named after the package around it.
set(CPACK_INCLUDE_TOPLEVEL_DIRECTORY OFF)
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/package)
set(CPACK_VERBATIM_VARIABLES ON)
include(CPack)
