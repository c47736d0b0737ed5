# -DWENDREL_SANITIZE=ON builds everything with AddressSanitizer and UndefinedBehaviorSanitizer.
option(WENDREL_SANITIZE "Build with AddressSanitizer and UBSan" OFF)
if(WENDREL_SANITIZE)
    add_compile_options(-fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
    add_link_options(-fsanitize=address,undefined)
endif()
