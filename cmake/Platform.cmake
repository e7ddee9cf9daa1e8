# The four libraries behind platform/, as targets of their own names: ours, or the closed in-house ones.
add_library(poveixme_platform INTERFACE)
set(platform_libraries ipmi_client globalconfig logger smmcommoninfo)

if(POVEIXME_PLATFORM STREQUAL standalone)
  add_subdirectory(platform/standalone)
  target_link_libraries(poveixme_platform INTERFACE ${platform_libraries})
elseif(POVEIXME_PLATFORM STREQUAL inhouse)
  foreach(library IN LISTS platform_libraries)
    find_library(POVEIXME_INHOUSE_${library} NAMES ${library} REQUIRED)
    target_link_libraries(poveixme_platform INTERFACE ${POVEIXME_INHOUSE_${library}})
  endforeach()
else()
  message(FATAL_ERROR
    "POVEIXME_PLATFORM is \"${POVEIXME_PLATFORM}\"; expected standalone or inhouse")
endif()
