# Folders into targets. Each folder of tools/layers.txt becomes the object library
# cutroom_<folder with underscores>; the shared library is made of all below cli; a test links the
# objects of its folder and of the lower ones, so it builds while a higher folder does not.

set(layersFile ${CMAKE_SOURCE_DIR}/tools/layers.txt)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${layersFile})
file(STRINGS ${layersFile} layerLines REGEX "^layer ")
list(TRANSFORM layerLines REPLACE "^layer +" "" OUTPUT_VARIABLE CUTROOM_LAYERS)
file(STRINGS ${layersFile} CUTROOM_CONTRACTS REGEX "^contract ")

# One precompiled header for library code; every folder reuses it.
file(WRITE ${CMAKE_BINARY_DIR}/pch/library.cpp "")
add_library(cutroom_pch OBJECT ${CMAKE_BINARY_DIR}/pch/library.cpp)
target_link_libraries(cutroom_pch PRIVATE cutroom_options)
target_precompile_headers(cutroom_pch PRIVATE
    <algorithm> <array> <atomic> <cstdint> <functional> <map> <memory> <mutex> <optional>
    <string> <string_view> <unordered_map> <utility> <vector>)
target_compile_definitions(cutroom_pch PRIVATE CUTROOM_BUILDING)

# The target name of a folder: platform/base -> cutroom_platform_base.
function(cutroom_target_of folder out)
    string(REPLACE / _ name ${folder})
    set(${out} cutroom_${name} PARENT_SCOPE)
endfunction()

# Sources of contract headers: built with the layer they count as (atLayer), not where they lie.
function(cutroom_contract_sources folder atLayer outElsewhere)
    set(here "")
    set(elsewhere "")
    foreach(line IN LISTS CUTROOM_CONTRACTS)
        string(REGEX MATCH "^contract +([^ ]+)\\.h +([^ ]+)" _ "${line}")
        set(source ${CMAKE_SOURCE_DIR}/${CMAKE_MATCH_1}.cpp)
        if(CMAKE_MATCH_2 STREQUAL folder AND EXISTS ${source})
            list(APPEND here ${source})
        else()
            list(APPEND elsewhere ${source})
        endif()
    endforeach()
    set(${atLayer} ${here} PARENT_SCOPE)
    set(${outElsewhere} ${elsewhere} PARENT_SCOPE)
endfunction()

# Makes the calling folder's target of the .h and .cpp files that lie in it (not below it). A
# folder without sources becomes an interface target, so that it can be linked like any other.
function(cutroom_folder)
    file(RELATIVE_PATH folder ${CMAKE_SOURCE_DIR} ${CMAKE_CURRENT_SOURCE_DIR})
    cutroom_target_of(${folder} target)
    file(GLOB sources CONFIGURE_DEPENDS *.cpp)
    file(GLOB headers CONFIGURE_DEPENDS *.h)
    cutroom_contract_sources(${folder} adopted elsewhere)
    list(REMOVE_ITEM sources ${elsewhere} ${CMAKE_CURRENT_SOURCE_DIR}/main.cpp)
    list(APPEND sources ${adopted})
    set_property(GLOBAL PROPERTY ${target}_headers ${headers})
    if(NOT sources)
        add_library(${target} INTERFACE)
        return()
    endif()
    add_library(${target} OBJECT ${sources})
    target_link_libraries(${target} PRIVATE cutroom_options)
    target_compile_definitions(${target} PRIVATE CUTROOM_BUILDING)
    if(CUTROOM_PCH)
        target_precompile_headers(${target} REUSE_FROM cutroom_pch)
    endif()
endfunction()

function(cutroom_add_folders)
    foreach(folder IN LISTS CUTROOM_LAYERS)
        if(EXISTS ${CMAKE_SOURCE_DIR}/${folder}/CMakeLists.txt)
            add_subdirectory(${folder})
        else()
            cutroom_target_of(${folder} target)
            add_library(${target} INTERFACE)
        endif()
    endforeach()
endfunction()

# Targets of all layers up to and with `folder`.
function(cutroom_targets_up_to folder out)
    set(targets "")
    foreach(layer IN LISTS CUTROOM_LAYERS)
        cutroom_target_of(${layer} target)
        list(APPEND targets ${target})
        if(layer STREQUAL folder)
            break()
        endif()
    endforeach()
    set(${out} ${targets} PARENT_SCOPE)
endfunction()

# libcutroom.so and the list of its headers, which is also the list of those that must compile
# alone (target all_verify_interface_header_sets).
function(cutroom_add_library)
    cutroom_targets_up_to(interchange folders)
    add_library(cutroom SHARED)
    add_library(cutroom::cutroom ALIAS cutroom)
    set(headers "")
    foreach(target IN LISTS folders)
        get_property(own GLOBAL PROPERTY ${target}_headers)
        list(APPEND headers ${own})
    endforeach()
    target_sources(cutroom PUBLIC FILE_SET HEADERS BASE_DIRS ${CMAKE_SOURCE_DIR} FILES ${headers})
    target_link_libraries(cutroom PRIVATE ${folders} cutroom_third_party cutroom_options)
    target_compile_features(cutroom PUBLIC cxx_std_20)
    if(NOT CUTROOM_SANITIZE) # clang leaves the sanitizer's own symbols to the program
        target_link_options(cutroom PRIVATE -Wl,--no-undefined)
    endif()
    set_target_properties(cutroom PROPERTIES
        VERSION ${PROJECT_VERSION}
        # what fits each other by the package's version file does so for the loader too
        SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR} LINKER_LANGUAGE CXX
        VERIFY_INTERFACE_HEADER_SETS ON)
endfunction()

# The command: main.cpp and the other files of cli/, on the exported symbols of the library.
function(cutroom_add_command)
    if(NOT EXISTS ${CMAKE_SOURCE_DIR}/cli/main.cpp)
        return()
    endif()
    add_executable(cutroom_command ${CMAKE_SOURCE_DIR}/cli/main.cpp)
    target_link_libraries(cutroom_command PRIVATE cutroom_cli cutroom cutroom_options)
    set_target_properties(cutroom_command PROPERTIES OUTPUT_NAME cutroom)
endfunction()
