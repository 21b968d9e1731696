# Libraries of the distribution. None of them shows in a header of ours, so they are linked
# privately and an embedder needs none of their development packages.

find_package(SQLite3 REQUIRED)
find_package(ZLIB REQUIRED)
find_package(nlohmann_json REQUIRED)
find_package(utf8cpp REQUIRED)
find_package(CLI11 REQUIRED)
find_path(UTF8PROC_INCLUDE_DIR utf8proc.h REQUIRED)
find_library(UTF8PROC_LIBRARY utf8proc REQUIRED)

add_library(cutroom_third_party INTERFACE)
target_link_libraries(cutroom_third_party INTERFACE
    SQLite::SQLite3 ZLIB::ZLIB ${UTF8PROC_LIBRARY})

if(BUILD_TESTING)
    find_package(GTest REQUIRED)
    find_package(rapidcheck QUIET)
endif()
find_package(benchmark QUIET)
