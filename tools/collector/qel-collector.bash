# Completion of qel-collector for bash.

_qel_collector() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  local options='erase --listen --certificate --key --credentials --store --admin --readers --retention --behind
    --user-requests --user-bytes --help --version'
  COMPREPLY=()
  if [[ ${COMP_WORDS[1]} == erase && $COMP_CWORD -gt 1 ]]; then
    options='--installation --user --store --yes --help --version'
  fi
  case $previous in
    --certificate | --key | --credentials | --readers | --store)
      mapfile -t COMPREPLY < <(compgen -f -- "$current")
      return
      ;;
    --listen | --admin | --retention | --behind | --user-requests | --user-bytes | --installation | --user) return ;;
  esac
  mapfile -t COMPREPLY < <(compgen -W "$options" -- "$current")
}
complete -o filenames -F _qel_collector qel-collector
