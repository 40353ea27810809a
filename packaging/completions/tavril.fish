# Completes the options of tavril in fish.
complete -c tavril -f
complete -c tavril -l demo -d 'Use the built-in virtual servo'
complete -c tavril -l connect -d 'Connect when the window has opened'
complete -c tavril -l port -r -F -d 'Put this terminal first in the port list'
complete -c tavril -l language -x -a 'de en es fr ja ko zh-Hans zh-Hant' -d 'Use this string table in this run'
complete -c tavril -l report -d 'Print all registers and exit'
complete -c tavril -l json -d 'With --report, print JSON'
complete -c tavril -l snapshot -r -F -d 'Save a picture of the window and exit'
complete -c tavril -s v -l version -d 'Print the version and exit'
complete -c tavril -s h -l help -d 'Print help and exit'
