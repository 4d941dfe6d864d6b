# Compiler, linker and warnings of every target of this tree.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 11)
set(CMAKE_C_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)

find_program(QORL_CCACHE ccache)
if(QORL_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    # The precompiled header is rebuilt with a new time stamp and the same content.
    set(launcher env CCACHE_BASEDIR=${CMAKE_SOURCE_DIR} CCACHE_NOHASHDIR=1
        CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime ${QORL_CCACHE})
    set(CMAKE_C_COMPILER_LAUNCHER ${launcher})
    set(CMAKE_CXX_COMPILER_LAUNCHER ${launcher})
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND QORL_PCH)
        add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-fpch-preprocess>)
    elseif(QORL_PCH)
        add_compile_options("$<$<COMPILE_LANGUAGE:CXX>:SHELL:-Xclang -fno-pch-timestamp>")
    endif()
endif()

find_program(QORL_MOLD mold)
if(QORL_MOLD)
    add_link_options(-fuse-ld=mold)
endif()

if(QORL_SANITIZE)
    add_compile_options(-fsanitize=${QORL_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${QORL_SANITIZE})
    if(QORL_SANITIZE MATCHES "undefined")
        # Both need the type information that the library is built without.
        add_compile_options(-fno-sanitize=vptr,function)
    endif()
    add_library(qorl-sanitizer OBJECT ${CMAKE_CURRENT_LIST_DIR}/sanitizer.c)
endif()

# Gives programs the settings of the sanitizers, where there are any.
function(qorl_sanitized)
    if(QORL_SANITIZE)
        foreach(program IN LISTS ARGN)
            target_link_libraries(${program} PRIVATE qorl-sanitizer)
        endforeach()
    endif()
endfunction()

add_compile_options(-Wall -Wextra -Wpedantic -Wformat-security -Wundef -Wpointer-arith)
add_compile_options("$<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast;-Wsuggest-override;-Wextra-semi>")
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    add_compile_options(-Wshadow=local -Wduplicated-cond -Wduplicated-branches -Wlogical-op -Wvla)
else()
    # The faces of an object publish operations of one name and different parameters.
    add_compile_options(-Wshadow -Wno-shadow-field-in-constructor -Wno-overloaded-virtual -Wimplicit-fallthrough
        -Wvla)
endif()
if(QORL_WERROR)
    add_compile_options(-Werror)
endif()
