# Completion of varmex in bash. The command itself knows what fits.
_varmex() {
  local line lines
  COMPREPLY=()
  mapfile -t lines < <("${COMP_WORDS[0]}" complete -- "${COMP_WORDS[@]:1:COMP_CWORD}" 2>/dev/null)
  if [[ ${lines[0]-} == :files* ]]; then
    compopt -o default
    return
  fi
  for line in "${lines[@]}"; do COMPREPLY+=("${line%%$'\t'*}"); done
}
complete -o nosort -F _varmex varmex
