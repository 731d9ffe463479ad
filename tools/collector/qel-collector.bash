# Completion of qel-collector for bash.

_qel_collector() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  local options='erase import --listen --certificate --key --credentials --store --store-credentials --create
    --batch-time --batch-rows --admin --readers --retention --behind --user-requests --user-bytes --help --version'
  COMPREPLY=()
  if [[ ${COMP_WORDS[1]} == erase && $COMP_CWORD -gt 1 ]]; then
    options='--installation --user --store --store-credentials --yes --help --version'
  elif [[ ${COMP_WORDS[1]} == import && $COMP_CWORD -gt 1 ]]; then
    options='--store --store-credentials --create --help --version'
    [[ $COMP_CWORD -gt 2 ]] || previous=--store
  fi
  case $previous in
    --certificate | --key | --credentials | --readers | --store | --store-credentials)
      mapfile -t COMPREPLY < <(compgen -f -- "$current")
      return
      ;;
    --listen | --admin | --retention | --behind | --batch-time | --batch-rows | \
      --user-requests | --user-bytes | --installation | --user) return ;;
  esac
  mapfile -t COMPREPLY < <(compgen -W "$options" -- "$current")
}
complete -o filenames -F _qel_collector qel-collector
