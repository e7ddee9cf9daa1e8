# For what an unsanitized program of somebody else's loads; every other target takes the next one.
add_library(poveixme_warnings INTERFACE)
target_compile_options(poveixme_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror
  # Paths in messages and debug information start at the repository's root.
  -ffile-prefix-map=${PROJECT_SOURCE_DIR}/=)
target_include_directories(poveixme_warnings INTERFACE ${PROJECT_SOURCE_DIR})

# What makes an error of ours harder to exploit: tests/hardening reads it off the binaries. CMake makes programs
# position-independent only after this check, whatever CMAKE_POSITION_INDEPENDENT_CODE says.
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)
add_library(poveixme_hardening INTERFACE)
target_compile_options(poveixme_hardening INTERFACE -fstack-protector-strong)
target_link_options(poveixme_hardening INTERFACE LINKER:-z,relro,-z,now,-z,noexecstack)
if(CMAKE_SYSTEM_PROCESSOR STREQUAL x86_64)
  target_compile_options(poveixme_hardening INTERFACE -fcf-protection=full)
  # The linker marks a file only when all it consists of is marked, and Debian 12's start files are not. They agree with a
  # shadow stack all the same, so that mark is right. They do lack landing pads for indirect jumps: no mark for those.
  target_link_options(poveixme_hardening INTERFACE LINKER:-z,shstk)
endif()
# The C library's checks need optimisation, and would hide from a sanitizer the calls that it watches.
if(NOT POVEIXME_SANITIZE)
  target_compile_options(poveixme_hardening INTERFACE
    $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>)
endif()

# What every target of this project is compiled with: link it as `poveixme_settings`.
add_library(poveixme_settings INTERFACE)
target_link_libraries(poveixme_settings INTERFACE poveixme_warnings poveixme_hardening)

# What the compiler writes into a test so that it watches itself for undefined behaviour takes it a quarter of its time.
# The code under test is watched everywhere.
define_property(TARGET PROPERTY POVEIXME_IS_TEST INITIALIZE_FROM_VARIABLE POVEIXME_IS_TEST)
if(POVEIXME_SANITIZE)
  target_compile_options(poveixme_settings INTERFACE
    -fsanitize=${POVEIXME_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer
    $<$<BOOL:$<TARGET_PROPERTY:POVEIXME_IS_TEST>>:-fno-sanitize=undefined>)
  target_link_options(poveixme_settings INTERFACE -fsanitize=${POVEIXME_SANITIZE})
endif()
if(POVEIXME_COVERAGE)
  target_compile_options(poveixme_settings INTERFACE --coverage -fno-inline)
  target_link_options(poveixme_settings INTERFACE --coverage)
endif()

# Exports of a shared library are the symbols listed in FILE (a linker version script) and no others.
function(poveixme_export_only target file)
  target_link_options(${target} PRIVATE LINKER:--version-script=${file})
  set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${file})
endfunction()
