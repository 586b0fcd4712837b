# The day of this version, as CHANGELOG.md has it: in release_day.
file(STRINGS CHANGELOG.md release REGEX "^## \\[${PROJECT_VERSION}\\] - " LIMIT_COUNT 1)
if(NOT release MATCHES "- ([0-9]+-[0-9]+-[0-9]+)$")
  message(FATAL_ERROR "CHANGELOG.md says nothing about version ${PROJECT_VERSION}")
endif()
set(release_day ${CMAKE_MATCH_1})
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS CHANGELOG.md)
