# The one place for compiler flags. Every target of ours links norvane_flags.
add_library(norvane_flags INTERFACE)
target_compile_features(norvane_flags INTERFACE cxx_std_20)
# Of sources that are compiled as one file, each shadows its neighbours' names; the presets that
# compile them one by one look for shadows.
target_compile_options(norvane_flags INTERFACE -Wall -Wextra -Wpedantic -Wconversion
    $<$<NOT:$<BOOL:$<TARGET_PROPERTY:UNITY_BUILD>>>:-Wshadow>)
target_compile_definitions(norvane_flags INTERFACE
    QT_NO_CAST_FROM_ASCII
    QT_NO_CAST_TO_ASCII
    QT_NO_URL_CAST_FROM_STRING
    QT_NO_KEYWORDS
    QT_STRICT_ITERATORS)
target_include_directories(norvane_flags INTERFACE "${PROJECT_SOURCE_DIR}/src")

option(NORVANE_SANITIZE "Build with AddressSanitizer and UndefinedBehaviorSanitizer" OFF)
if(NORVANE_SANITIZE)
    target_compile_options(norvane_flags INTERFACE
        -fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
    target_link_options(norvane_flags INTERFACE -fsanitize=address,undefined)
endif()

# The toolkit isn't instrumented: what passes between threads through it alone may be told as a race.
option(NORVANE_SANITIZE_THREADS "Build with ThreadSanitizer" OFF)
if(NORVANE_SANITIZE_THREADS)
    target_compile_options(norvane_flags INTERFACE -fsanitize=thread -fno-omit-frame-pointer)
    target_link_options(norvane_flags INTERFACE -fsanitize=thread)
endif()

# For tests/fuzz: everything of ours is instrumented, and fuzz_all builds the programs.
option(NORVANE_FUZZ "Build the fuzz targets with libFuzzer (clang only)" OFF)
if(NORVANE_FUZZ)
    if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
        message(FATAL_ERROR "NORVANE_FUZZ needs clang: -DCMAKE_CXX_COMPILER=clang++")
    endif()
    target_compile_options(norvane_flags INTERFACE
        -fsanitize=fuzzer-no-link,address,undefined -fno-omit-frame-pointer
        -fno-sanitize-recover=undefined)
    target_link_options(norvane_flags INTERFACE -fsanitize=address,undefined)
endif()

# norvane_library(<name> [WIDGETS] [MOC] SOURCES ... [LINK ...]): a library for one folder of src/.
#   WIDGETS: its sources include headers of widgets.
#   MOC: it declares a class with Q_OBJECT. Left out, such a class doesn't link.
function(norvane_library name)
    cmake_parse_arguments(ARG "WIDGETS;MOC" "" "SOURCES;LINK" ${ARGN})
    add_library(${name} STATIC ${ARG_SOURCES})
    target_link_libraries(${name} PUBLIC norvane_flags ${ARG_LINK})
    set_target_properties(${name} PROPERTIES AUTOMOC "${ARG_MOC}")
    if(ARG_WIDGETS)
        norvane_precompiled(${name} widgets)
    else()
        norvane_precompiled(${name} core)
    endif()
endfunction()
