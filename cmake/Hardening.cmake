# Mistakes that are left end the program instead of being of use to a file that was made to find them. For every target.

include(CheckPIESupported)
check_pie_supported()
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

add_compile_definitions(_GLIBCXX_ASSERTIONS)
add_compile_options(-fstack-protector-strong -fstack-clash-protection)
add_link_options(LINKER:-z,relro LINKER:-z,now)
# The sanitizers look at the same calls, and know more; without optimization the library cannot.
if(NOT LUMAGRID_SANITIZE)
  add_compile_options("$<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=3>")
endif()
