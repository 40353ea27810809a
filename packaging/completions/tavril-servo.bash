# Completes the options of tavril-servo in bash.
_tavril_servo() {
  local cur=$2 prev=$3
  COMPREPLY=()
  case $prev in
    --link | --log | --from | --state) compopt -o filenames; mapfile -t COMPREPLY < <(compgen -f -- "$cur") ;;
    --lose | --delay | --start-up | --split | --split-gap | --seed | --error | --write-error | --unplug-after) ;;
    *)
      mapfile -t COMPREPLY < <(compgen -W "--link --log --no-servo --two-servos --mute --lose --delay --start-up --split
        --split-gap --glue --noise --seed --wrong-length --late-ends --error --write-error --obey-ack-policy --from
        --state --unplug-after --pace --no-pace --version
        --help" -- "$cur")
      ;;
  esac
}
complete -F _tavril_servo tavril-servo
