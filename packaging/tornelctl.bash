# Completion for tornelctl. The program's own help says what there is, so what is offered always fits it.
# shellcheck shell=bash

# The commands in a help text.
_tornelctl_commands() {
  sed -n '/^Commands:/,/^$/s/^  \([a-z][a-z-]*\).*/\1/p' <<<"$1"
}

# The options in a help text. With an option as the second argument: what that takes, as the help calls it; nothing
# when it takes no value.
_tornelctl_options() {
  local line name names value
  while IFS= read -r line; do
    if [[ $line =~ ^\ \ (-[^ ]+)(\ ([^ ]+))? ]]; then
      value=${BASH_REMATCH[3]}
      IFS=, read -ra names <<<"${BASH_REMATCH[1]}"
      for name in "${names[@]}"; do
        if [[ $# -eq 1 ]]; then
          printf '%s\n' "$name"
        elif [[ $name == "$2" ]]; then
          printf '%s\n' "$value"
        fi
      done
    fi
  done <<<"$1"
}

_tornelctl_words() {
  mapfile -t COMPREPLY < <(compgen -W "$1" -- "$2")
}

_tornelctl_files() {
  mapfile -t COMPREPLY < <(compgen -f -- "$1")
  compopt -o filenames 2>/dev/null  # fails outside of a completion
}

_tornelctl() {
  local program=${COMP_WORDS[0]} word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
  local command='' help place value
  COMPREPLY=()
  program=${program/#\~/$HOME}
  help=$("$program" --help 2>/dev/null) || return 0
  for ((place = 1; place < COMP_CWORD; place++)); do
    if [[ ${COMP_WORDS[place]} != -* ]]; then
      command=${COMP_WORDS[place]}
      break
    fi
  done
  if [[ -z $command ]]; then
    _tornelctl_words "$(_tornelctl_commands "$help") $(_tornelctl_options "$help")" "$word"
    return 0
  fi
  if [[ $command == help ]]; then
    _tornelctl_words "$(_tornelctl_commands "$help")" "$word"
    return 0
  fi

  help=$("$program" "$command" --help 2>/dev/null) || return 0
  value=''
  if [[ $before == -* ]]; then
    value=$(_tornelctl_options "$help" "$before")
  fi
  if [[ $value == *:\{*\}* ]]; then
    value=${value#*:\{}
    value=${value%%\}*}  # a default follows the values
    _tornelctl_words "${value//,/ }" "$word"
  elif [[ -n $value ]]; then
    case $before:$value in
      -o:* | --output:* | *:FILE | *:DIR) _tornelctl_files "$word" ;;
    esac
  elif [[ $word == -* ]]; then
    _tornelctl_words "$(_tornelctl_options "$help")" "$word"
  elif grep -q '^  FILE' <<<"$help"; then
    _tornelctl_files "$word"
  fi
  return 0
}

complete -F _tornelctl tornelctl
