# What Debian's policy wants of an installed tree that others do not: programs without what only their developers read,
# manual and changelogs compressed, without a time in them, and the completion for zsh where Debian's zsh looks.
set(usr ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/usr)
set(share ${usr}/share)
execute_process(
  COMMAND strip --strip-unneeded --remove-section=.comment --remove-section=.note ${usr}/bin/lumagrid
    ${usr}/libexec/lumagrid/lumagrid-decoder
  COMMAND_ERROR_IS_FATAL ANY)
file(COPY_FILE ${CMAKE_CURRENT_LIST_DIR}/changelog ${share}/doc/lumagrid/changelog.Debian)
file(RENAME ${share}/zsh/site-functions ${share}/zsh/vendor-completions)
execute_process(
  COMMAND gzip -9n ${share}/man/man1/lumagrid.1 ${share}/doc/lumagrid/changelog ${share}/doc/lumagrid/changelog.Debian
  COMMAND_ERROR_IS_FATAL ANY)
