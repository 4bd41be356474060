# mingw-i686.cmake - cross-build for 32-bit Windows with Debian's mingw-w64 (posix thread model)
# The posix model: the win32 one lacks std::thread and std::mutex, which the
# concurrency test needs.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86)

set(CMAKE_C_COMPILER i686-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER i686-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER i686-w64-mingw32-windres)

set(CMAKE_FIND_ROOT_PATH /usr/i686-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Test programs run through the project's private 32-bit Wine, unpacked by
# .ci/install_wine32.sh into VKTIFF_WINE32 (default build/wine32).
if(NOT VKTIFF_WINE32)
  get_filename_component(VKTIFF_WINE32 ${CMAKE_CURRENT_LIST_DIR}/../build/wine32 ABSOLUTE)
endif()
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/wine32.sh ${VKTIFF_WINE32})
