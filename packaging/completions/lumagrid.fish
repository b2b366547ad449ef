# Completion for fish.

complete -c lumagrid -l appearance -x -a 'light dark' -d 'Override the appearance of the desktop'
complete -c lumagrid -s h -l help -f -d 'Show the options'
complete -c lumagrid -s v -l version -f -d 'Show the version'
