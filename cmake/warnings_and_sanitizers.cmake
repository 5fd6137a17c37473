add_compile_options(-Wall -Wextra -Wconversion)
if(PHOTOLIB_WERROR)
    add_compile_options(-Werror)
endif()

if(PHOTOLIB_SANITIZE)
    add_compile_options(-fsanitize=${PHOTOLIB_SANITIZE} -fno-omit-frame-pointer
                        -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${PHOTOLIB_SANITIZE})
endif()
