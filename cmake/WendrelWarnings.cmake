# Every Wendrel target builds warning-clean with -Wall -Wextra; wendrel_warnings() applies the set.
function(wendrel_warnings target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow=local
                           -Wnon-virtual-dtor -Wcast-qual -Wformat=2)
    target_compile_definitions(${target} PRIVATE QT_NO_KEYWORDS QT_NO_CAST_FROM_ASCII
                               QT_NO_CAST_TO_ASCII QT_NO_URL_CAST_FROM_STRING)
endfunction()
