# The project's warning set, applied target by target so that third-party
# headers (included as system headers) never fail the build.
function(daywyn_warnings target)
    target_compile_options(${target} PRIVATE
        -Wall -Wextra -Wpedantic -Wshadow
        $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor -Wold-style-cast -Woverloaded-virtual>)
    if(DAYWYN_WERROR)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
endfunction()
