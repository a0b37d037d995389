# find_package(vq3900_depth_engine 2 CONFIG) gives the target vq3900::depth_engine. The library needs no other package.
include("${CMAKE_CURRENT_LIST_DIR}/vq3900_depth_engine-targets.cmake")
