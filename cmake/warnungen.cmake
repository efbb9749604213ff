# The one list of warnings every target of ours compiles with.
set(FLURIX_WARNUNGEN
    -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual
    -Wold-style-cast -Wimplicit-fallthrough -Wzero-as-null-pointer-constant)

function(flurix_warnungen ziel)
    target_compile_options(${ziel} PRIVATE ${FLURIX_WARNUNGEN})
    if(FLURIX_WERROR)
        target_compile_options(${ziel} PRIVATE -Werror)
    endif()
endfunction()
