# What every line of C and C++ in this tree is compiled with.
# Backtraces need unwind tables, which a C++ compiler for ARM leaves out without exceptions.
add_compile_options(-funwind-tables)
add_compile_options(-Wall -Wextra -Wshadow -Wconversion -Wformat=2 -Werror)
add_compile_options($<$<CXX_COMPILER_ID:Clang>:-Wthread-safety>) # support/thread_safety.h

# The product itself: no exceptions, no run-time types. Tables of operations leave slots empty on purpose.
function(movo_product target)
    target_compile_options(${target} PRIVATE
        $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions -fno-rtti -Wno-missing-field-initializers>)
endfunction()
