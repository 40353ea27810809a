#compdef tavril
# Completes the options of tavril in zsh.
_arguments \
  '(--port)--demo[use the built-in virtual servo]' \
  '(--report --json --snapshot)--connect[connect when the window has opened]' \
  '(--demo)*--port[put the terminal at this path first in the port list]:terminal:_files -g "/dev/tty(USB|ACM)*" -g "*"' \
  '--language[use this string table in this run]:language:(de en es fr ja ko zh-Hans zh-Hant)' \
  '(--snapshot --connect)--report[print all registers and exit]' \
  '(--snapshot --connect)--json[with --report, print JSON]' \
  '(--report --json --connect)--snapshot[save a picture of the window and exit]:picture:_files -g "*.png"' \
  '(- *)'{-v,--version}'[print the version and exit]' \
  '(- *)'{-h,--help}'[print help and exit]'
