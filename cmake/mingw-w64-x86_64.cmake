# Cross-compiles for 64-bit Windows with Debian's MinGW-w64 (posix threads).
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(KQ_MINGW_TRIPLE x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${KQ_MINGW_TRIPLE}-gcc-posix)
set(CMAKE_CXX_COMPILER ${KQ_MINGW_TRIPLE}-g++-posix)
set(CMAKE_RC_COMPILER ${KQ_MINGW_TRIPLE}-windres)

# libxml2 is cross-built by scripts/setup.sh into a cache folder outside the tree.
if(NOT DEFINED KQ_LIBXML2_MINGW)
  if(DEFINED ENV{KQ_LIBXML2_MINGW})
    set(KQ_LIBXML2_MINGW "$ENV{KQ_LIBXML2_MINGW}")
  else()
    if(DEFINED ENV{KQ_CACHE_DIR})
      set(_kq_cache "$ENV{KQ_CACHE_DIR}")
    elseif(DEFINED ENV{XDG_CACHE_HOME})
      set(_kq_cache "$ENV{XDG_CACHE_HOME}/kq-amiga")
    else()
      set(_kq_cache "$ENV{HOME}/.cache/kq-amiga")
    endif()
    set(KQ_LIBXML2_MINGW "${_kq_cache}/libxml2-2.9.14-mingw64-static-w32threads")
  endif()
endif()

set(CMAKE_FIND_ROOT_PATH /usr/${KQ_MINGW_TRIPLE} ${KQ_LIBXML2_MINGW})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# ctest runs the Windows test programs under Wine.
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../scripts/wine-run.sh)
