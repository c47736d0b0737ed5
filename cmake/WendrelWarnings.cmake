# Every Wendrel target builds warning-clean with -Wall -Wextra; wendrel_warnings() applies the set.
function(wendrel_warnings target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow=local
                           -Wnon-virtual-dtor -Wcast-qual -Wformat=2
                           # Records are filled with designated initializers that leave members
                           # at their defaults on purpose; GCC 12 still warns about those.
                           -Wno-missing-field-initializers)
    target_compile_definitions(${target} PRIVATE QT_NO_KEYWORDS QT_NO_CAST_FROM_ASCII
                               QT_NO_CAST_TO_ASCII QT_NO_URL_CAST_FROM_STRING)
endfunction()
