# 64-bit ARM with Linux, with Debian's g++-aarch64-linux-gnu; its programs run under qemu-user.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)

set(vq3900_triplet aarch64-linux-gnu)
set(CMAKE_C_COMPILER ${vq3900_triplet}-gcc)
set(CMAKE_CXX_COMPILER ${vq3900_triplet}-g++)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64 -L /usr/${vq3900_triplet})

include("${CMAKE_CURRENT_LIST_DIR}/cross.cmake")
