# For what an unsanitized program of somebody else's loads; every other target takes the next one.
add_library(poveixme_warnings INTERFACE)
target_compile_options(poveixme_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror
  # Paths in messages and debug information start at the repository's root.
  -ffile-prefix-map=${PROJECT_SOURCE_DIR}/=)
target_include_directories(poveixme_warnings INTERFACE ${PROJECT_SOURCE_DIR})

# What every target of this project is compiled with: link it as `poveixme_settings`.
add_library(poveixme_settings INTERFACE)
target_link_libraries(poveixme_settings INTERFACE poveixme_warnings)

if(POVEIXME_SANITIZE)
  target_compile_options(poveixme_settings INTERFACE
    -fsanitize=${POVEIXME_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
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
