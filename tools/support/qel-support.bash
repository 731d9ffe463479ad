# Completion of qel-support for bash.

_qel_support() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  local command=${COMP_WORDS[1]} options
  COMPREPLY=()
  if [[ $COMP_CWORD -eq 1 ]]; then
    mapfile -t COMPREPLY < <(compgen -W 'sessions show stats export report purge --help --version' -- "$current")
    return
  fi
  case $previous in
    --session)
      local sessions directory=${COMP_WORDS[2]/#\~/$HOME}
      directory=${directory//[\"\'\\]/} # removes the quoting that the user typed
      sessions=$("${COMP_WORDS[0]}" sessions "$directory" --json 2>/dev/null |
        sed -n 's/^ *"session": "\([0-9A-Fa-f-]*\)",$/\1/p')
      mapfile -t COMPREPLY < <(compgen -W "last $sessions" -- "$current")
      return
      ;;
    --output)
      mapfile -t COMPREPLY < <(compgen -f -- "$current")
      return
      ;;
    --to)
      mapfile -t COMPREPLY < <(compgen -d -- "$current")
      return
      ;;
    --category | --since | --until | --search) return ;;
  esac
  case $command in
    sessions | stats) options='--json --local-time' ;;
    show) options='--session --category --since --until --search --follow --json --local-time' ;;
    export) options='--session --to' ;;
    report) options='--session --output' ;;
    purge) options='--yes' ;;
    *) return ;;
  esac
  if [[ $current == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$options --help" -- "$current")
  elif [[ $command == purge ]]; then
    mapfile -t COMPREPLY < <(compgen -d -- "$current")
  else
    mapfile -t COMPREPLY < <(compgen -d -- "$current"; compgen -f -X '!*.db' -- "$current")
  fi
}
complete -o filenames -F _qel_support qel-support
