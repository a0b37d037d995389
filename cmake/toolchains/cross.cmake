# What the toolchain files share: programs come from this machine, everything else from the other system alone.
list(APPEND CMAKE_FIND_ROOT_PATH "/usr/${vq3900_triplet}") # behind what -DCMAKE_FIND_ROOT_PATH names
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
