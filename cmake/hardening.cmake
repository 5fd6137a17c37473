# What makes a mistake in the reading of a device's files harder to use: guarded stacks, checked
# copies into buffers of a known size, tables of addresses that are read-only before the first
# call, and addresses that differ from run to run.
include(CheckCXXSourceCompiles)
include(CheckPIESupported)

# Executables are linked as position-independent ones only after this check.
check_pie_supported(LANGUAGES CXX)

add_compile_options(-fstack-protector-strong)
add_link_options(-Wl,-z,relro -Wl,-z,now)

# A distribution that defines it itself may ask for more than this; its definition stays.
set(CMAKE_REQUIRED_FLAGS -O2)
check_cxx_source_compiles("
#ifndef _FORTIFY_SOURCE
#error not defined
#endif
int main() { return 0; }" PHOTOLIB_COMPILER_FORTIFIES)
unset(CMAKE_REQUIRED_FLAGS)

# The checks need optimisation, and the sanitizers' own checks of the same calls stand in their
# way.
if(NOT PHOTOLIB_COMPILER_FORTIFIES AND NOT PHOTOLIB_SANITIZE)
    add_compile_options("$<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>")
endif()
