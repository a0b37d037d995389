# A big-endian machine with Linux, with Debian's g++-s390x-linux-gnu; its programs run under qemu-user.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR s390x)

set(vq3900_triplet s390x-linux-gnu)
set(CMAKE_C_COMPILER ${vq3900_triplet}-gcc)
set(CMAKE_CXX_COMPILER ${vq3900_triplet}-g++)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-s390x -L /usr/${vq3900_triplet})

include("${CMAKE_CURRENT_LIST_DIR}/cross.cmake")
