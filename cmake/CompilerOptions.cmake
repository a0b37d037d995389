# What every target of the project is compiled with. Targets take it by linking vq3900_compiler_options.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 11)
set(CMAKE_C_STANDARD_REQUIRED ON)
set(CMAKE_C_EXTENSIONS OFF)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

add_library(vq3900_compiler_options INTERFACE)

# Floating point is part of the device contract: one rounding per operation, in the precision of its operands, never a
# fused multiply-add.
target_compile_options(vq3900_compiler_options INTERFACE -ffp-contract=off)
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_SYSTEM_PROCESSOR MATCHES s390)
  target_compile_options(vq3900_compiler_options INTERFACE -fexcess-precision=fast) # float stays float in standard C
endif()

set(vq3900_warnings -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wdouble-promotion
                    -Wfloat-conversion -Wcast-align -Wformat=2 -Wundef)
target_compile_options(
  vq3900_compiler_options
  INTERFACE ${vq3900_warnings}
            $<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast -Wmissing-declarations -Wnon-virtual-dtor -Woverloaded-virtual>
            $<$<COMPILE_LANGUAGE:C>:-Wstrict-prototypes -Wmissing-prototypes>)
# At -O3 g++ 12 takes some sums of strings for overlapping copies.
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13
   AND CMAKE_CXX_FLAGS_RELEASE MATCHES -O3)
  target_compile_options(vq3900_compiler_options
                         INTERFACE $<$<AND:$<CONFIG:Release>,$<COMPILE_LANGUAGE:CXX>>:-Wno-restrict>)
endif()
if(VQ3900_WARNINGS_AS_ERRORS)
  target_compile_options(vq3900_compiler_options INTERFACE -Werror)
endif()

if(VQ3900_SANITIZE)
  set(vq3900_sanitizers -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    # The first is no part of "undefined" there. The second objects to the few functions whose out-parameters C++ hosts
    # see as references and the library as pointers.
    list(APPEND vq3900_sanitizers -fsanitize=float-cast-overflow -fno-sanitize=function)
  endif()
  target_compile_options(vq3900_compiler_options INTERFACE ${vq3900_sanitizers})
  target_link_options(vq3900_compiler_options INTERFACE ${vq3900_sanitizers})
endif()

if(VQ3900_FUZZ)
  set(vq3900_sanitizers -fsanitize=address,undefined,float-cast-overflow)
  target_compile_options(vq3900_compiler_options INTERFACE ${vq3900_sanitizers} -fsanitize=fuzzer-no-link
                                                           -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(vq3900_compiler_options INTERFACE ${vq3900_sanitizers})
endif()

if(VQ3900_COVERAGE)
  target_compile_options(vq3900_compiler_options INTERFACE --coverage -O0)
  target_link_options(vq3900_compiler_options INTERFACE --coverage)
endif()
