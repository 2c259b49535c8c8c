# Defences of the compiler and the linker, for what is installed: tests/install/test_hardening.py reads them from it.
option(MOVO_HARDENED "Build with the defences of the compiler and the linker" OFF)
if(NOT MOVO_HARDENED)
    return()
endif()
include(CheckCXXCompilerFlag)
include(CheckCXXSourceCompiles)

# CMAKE_POSITION_INDEPENDENT_CODE alone leaves it to the compiler's default whether a program is linked as one.
include(CheckPIESupported)
check_pie_supported(LANGUAGES C CXX)

add_compile_options(-fstack-protector-strong)
add_compile_definitions($<$<COMPILE_LANGUAGE:CXX>:_GLIBCXX_ASSERTIONS>)
add_link_options(LINKER:-z,relro LINKER:-z,now LINKER:-z,noexecstack)

# It replaces calls by checking ones (read by __read_chk), which the simulated set would not catch.
if(NOT MOVO_TESTS)
    set(CMAKE_REQUIRED_FLAGS "-O2 -Werror -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3")
    check_cxx_source_compiles("#include <cstdio>\nint main() {}" MOVO_HAS_FORTIFY_3) # else the C library warns
    unset(CMAKE_REQUIRED_FLAGS)
    add_compile_options(-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=$<IF:$<BOOL:${MOVO_HAS_FORTIFY_3}>,3,2>)
    add_compile_options(-Wno-unused-result) # it marks calls such that g++ warns in spite of a cast to void
endif()

# Indirect jumps land only where a function begins, returns only where a call was; 32-bit ARM has no such check.
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64)$")
    set(flow -fcf-protection=full)
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^(aarch64|arm64)$")
    set(flow -mbranch-protection=standard)
endif()
if(DEFINED flow)
    check_cxx_compiler_flag(${flow} MOVO_HAS_FLOW_PROTECTION)
    if(MOVO_HAS_FLOW_PROTECTION)
        add_compile_options(${flow})
    endif()
endif()
