# How the targets of this tree are compiled: warnings and sanitizers, private to our own code.

function(zel_compile_options target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
    if(CMAKE_CXX_COMPILER_ID MATCHES Clang)
        # g++ does not count the change between signed and unsigned among the conversions.
        target_compile_options(${target} PRIVATE -Wno-sign-conversion)
    elseif(CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
        # g++ 12 sees overlapping copies in sums of std::string and literals, where there are none.
        target_compile_options(${target} PRIVATE -Wno-restrict)
    endif()
    if(ZEL_WERROR)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
    if(ZEL_SANITIZE)
        target_compile_options(${target} PRIVATE -fsanitize=${ZEL_SANITIZE}
            -fno-sanitize-recover=all -fno-omit-frame-pointer)
        target_link_options(${target} PRIVATE -fsanitize=${ZEL_SANITIZE})
        # Under which limits of memory and counts of what is in use mean nothing.
        target_compile_definitions(${target} PRIVATE ZEL_SANITIZED)
    endif()
endfunction()
