# Installs into a folder of its own, then compares what is there, to the file, with what should be.
set(expected
  bin/purlock
  etc/xdg/autostart/org.purlock.Purlock.desktop
  share/applications/org.purlock.Purlock.desktop
  share/dbus-1/services/org.purlock.Purlock.service
  share/doc/purlock/CHANGELOG.md
  share/doc/purlock/changelog.gz
  share/doc/purlock/copyright
  share/icons/hicolor/scalable/apps/org.purlock.Purlock.svg
  share/icons/hicolor/symbolic/apps/purlock-idle-symbolic.svg
  share/icons/hicolor/symbolic/apps/purlock-unknown-symbolic.svg
  share/man/man1/purlock.1.gz
  share/metainfo/org.purlock.Purlock.metainfo.xml)

set(folder ${BUILD}/installed-by-test)
file(REMOVE_RECURSE ${folder})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix ${folder} OUTPUT_QUIET
  COMMAND_ERROR_IS_FATAL ANY)
file(GLOB_RECURSE installed RELATIVE ${folder} ${folder}/*)
list(SORT installed)
file(REMOVE_RECURSE ${folder})
if(NOT installed STREQUAL expected)
  message(FATAL_ERROR "installed: ${installed}\nexpected: ${expected}")
endif()
