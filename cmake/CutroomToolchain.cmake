# How everything is compiled: language, warnings, sanitizers, compiler cache. The result is the
# interface target cutroom_options, which every target of the tree links privately.

option(CUTROOM_PCH "Use precompiled headers" ON)
option(CUTROOM_FUZZ "Build the libFuzzer targets (clang)" OFF)
option(CUTROOM_COVERAGE "Count executed lines and branches" OFF)
set(CUTROOM_SANITIZE "" CACHE STRING "Sanitizers, as -fsanitize= takes them")

if(NOT CMAKE_BUILD_TYPE)
    set(CMAKE_BUILD_TYPE Dev CACHE STRING "Dev or Release" FORCE)
endif()
set(CMAKE_CXX_FLAGS_DEV "-O1 -g1")
# Nobody puts a function of another library in place of ours: calls inside it may be direct.
set(CMAKE_CXX_FLAGS_RELEASE "-O2 -DNDEBUG -fno-semantic-interposition")
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # Hosts give classes of their own to every interface: where ours has one, it is not to be
    # guessed. Where a loop happens to fall changes what telling costs by a quarter.
    string(APPEND CMAKE_CXX_FLAGS_RELEASE
        " -fno-devirtualize-speculatively -falign-functions=32 -falign-loops=32")
endif()
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
find_package(Threads REQUIRED)

add_library(cutroom_options INTERFACE)
target_include_directories(cutroom_options INTERFACE ${CMAKE_SOURCE_DIR})
target_link_libraries(cutroom_options INTERFACE Threads::Threads)
target_compile_options(cutroom_options INTERFACE
    -fPIC # for all alike, so that one precompiled header serves libraries and programs
    -Wall -Wextra -Wconversion -Wshadow # errors, but in the release preset
    # GCC 12 warns of overlapping copies inside std::string where there are none.
    $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
    $<$<CXX_COMPILER_ID:Clang>:-Wthread-safety>)
target_compile_definitions(cutroom_options INTERFACE
    $<$<CONFIG:Dev>:_GLIBCXX_ASSERTIONS>)

if(CUTROOM_SANITIZE)
    target_compile_options(cutroom_options INTERFACE
        -fsanitize=${CUTROOM_SANITIZE} -fno-omit-frame-pointer)
    target_link_options(cutroom_options INTERFACE -fsanitize=${CUTROOM_SANITIZE})
    if(CUTROOM_SANITIZE MATCHES undefined)
        target_compile_options(cutroom_options INTERFACE -fno-sanitize-recover=undefined)
    endif()
endif()
if(CUTROOM_FUZZ)
    target_compile_options(cutroom_options INTERFACE -O2) # clang's -O1 inlines hardly anything
endif()
if(CUTROOM_COVERAGE)
    # Threads add to the counts atomically: else some are lost, and some become negative.
    target_compile_options(cutroom_options INTERFACE -O0 --coverage -fprofile-update=atomic)
    target_link_options(cutroom_options INTERFACE --coverage)
endif()

find_program(CUTROOM_LLD ld.lld)
if(CUTROOM_LLD)
    target_link_options(cutroom_options INTERFACE -fuse-ld=lld)
endif()

# Build folders of one tree share the cache: paths below the build folder are made relative, and
# precompiled headers count by their contents.
find_program(CUTROOM_CCACHE ccache)
if(CUTROOM_CCACHE)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env
        CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime
        CCACHE_BASEDIR=${CMAKE_BINARY_DIR} CCACHE_NOHASHDIR=1
        ${CUTROOM_CCACHE})
    if(CMAKE_CXX_COMPILER_ID STREQUAL Clang)
        target_compile_options(cutroom_options INTERFACE "SHELL:-Xclang -fno-pch-timestamp")
    endif()
endif()
