# Completion of varmex in bash. The command itself knows what fits.
_varmex() {
  local line lines word words=() ahead=
  COMPREPLY=()
  # Bash takes words apart at colons, which addresses have, and replaces what is behind the last.
  for word in "${COMP_WORDS[@]:1:COMP_CWORD}"; do
    if [[ ${#words[@]} -gt 0 && ($word == :* || ${words[-1]} == *:) ]]; then
      words[-1]+=$word
    else
      words+=("$word")
    fi
  done
  [[ ${words[-1]} != *:* || $COMP_WORDBREAKS != *:* ]] || ahead=${words[-1]%:*}:
  mapfile -t lines < <("${COMP_WORDS[0]}" complete -- "${words[@]}" 2>/dev/null)
  if [[ ${lines[0]-} == :files* ]]; then
    compopt -o default
    return
  fi
  for line in "${lines[@]}"; do
    line=${line%%$'\t'*}
    COMPREPLY+=("${line#"$ahead"}")
  done
}
complete -o nosort -F _varmex varmex
