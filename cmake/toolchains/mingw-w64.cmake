# 64-bit Windows, with Debian's g++-mingw-w64-x86-64-posix. The compiler's "-win32" flavour has no std::mutex.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(vq3900_triplet x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${vq3900_triplet}-gcc-posix)
set(CMAKE_CXX_COMPILER ${vq3900_triplet}-g++-posix)
set(CMAKE_RC_COMPILER ${vq3900_triplet}-windres)

# The compiler's run-time libraries go into every binary: with -static-libgcc and -static-libstdc++ alone the thread
# library would stay outside. Without a time stamp the same sources give the same bytes.
foreach(kind EXE SHARED MODULE)
  set(CMAKE_${kind}_LINKER_FLAGS_INIT "-static -Wl,--no-insert-timestamp")
endforeach()

include("${CMAKE_CURRENT_LIST_DIR}/cross.cmake")
