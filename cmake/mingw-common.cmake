# The posix thread model: GoogleTest and std::thread need it; winpthread is
# linked statically so the products depend on system DLLs only.
set(CMAKE_C_COMPILER   ${CORVAN_TRIPLE}-gcc-posix)
set(CMAKE_CXX_COMPILER ${CORVAN_TRIPLE}-g++-posix)
set(CMAKE_RC_COMPILER  ${CORVAN_TRIPLE}-windres)
set(CMAKE_AR           ${CORVAN_TRIPLE}-gcc-ar-posix)
set(CMAKE_RANLIB       ${CORVAN_TRIPLE}-gcc-ranlib-posix)
find_program(CORVAN_WIDL NAMES ${CORVAN_TRIPLE}-widl x86_64-w64-mingw32-widl widl REQUIRED)

set(CMAKE_FIND_ROOT_PATH /usr/${CORVAN_TRIPLE})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)

set(CMAKE_EXE_LINKER_FLAGS_INIT    "-static -static-libgcc -static-libstdc++")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static -static-libgcc -static-libstdc++")
