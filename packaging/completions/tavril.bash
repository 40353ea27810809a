# Completes the options of tavril in bash.
_tavril() {
  local cur=$2 prev=$3
  COMPREPLY=()
  case $prev in
    --port)
      mapfile -t COMPREPLY < <(compgen -W "$(compgen -G '/dev/ttyUSB*'; compgen -G '/dev/ttyACM*')" -- "$cur")
      [[ ${#COMPREPLY[@]} -gt 0 ]] || { compopt -o filenames; mapfile -t COMPREPLY < <(compgen -f -- "$cur"); }
      ;;
    --language) mapfile -t COMPREPLY < <(compgen -W "de en es fr ja ko zh-Hans zh-Hant" -- "$cur") ;;
    --snapshot) compopt -o filenames; mapfile -t COMPREPLY < <(compgen -f -- "$cur") ;;
    *)
      mapfile -t COMPREPLY < <(compgen -W "--demo --connect --port --language --report --json --snapshot --version --help" -- "$cur")
      ;;
  esac
}
complete -F _tavril tavril
