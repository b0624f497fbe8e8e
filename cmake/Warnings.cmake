# The warnings every target of the project is built with.
function(orvabase_warnings target)
    target_compile_options(${target} PRIVATE
        -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion
        $<$<BOOL:${ORVABASE_WERROR}>:-Werror>)
endfunction()
