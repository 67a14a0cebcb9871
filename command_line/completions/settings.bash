# Completion of the program `settings` for bash: commands, options, types and paths. Names of files
# are completed where the program has nothing to offer.
_settings() {
  local IFS=$'\n'
  COMPREPLY=($("${COMP_WORDS[0]}" complete "${COMP_WORDS[@]:1:COMP_CWORD}" 2>/dev/null))
  if [[ ${#COMPREPLY[@]} -eq 1 && ${COMPREPLY[0]} == *. ]]; then
    compopt -o nospace
  fi
}
complete -o default -F _settings settings
