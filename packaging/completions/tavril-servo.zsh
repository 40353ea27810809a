#compdef tavril-servo
# Completes the options of tavril-servo in zsh.
_arguments \
  '--link[keep a symbolic link to the terminal]:path:_files' \
  '--log[write the traffic to this file]:file:_files' \
  '(--two-servos)--no-servo[no servo is attached]' \
  '(--no-servo)--two-servos[more than one servo is attached]' \
  '--mute[never reply]' \
  '--lose[lose one reply in so many]:number: ' \
  '--delay[reply this much later]:milliseconds: ' \
  '--start-up[ignore everything for this long after the start]:milliseconds: ' \
  '--split[cut replies in pieces]:bytes: ' \
  '--split-gap[pause between pieces]:milliseconds: ' \
  '--glue[send two replies in one write]' \
  '--noise[send random bytes between the replies]' \
  '--seed[seed of the random bytes and losses]:number: ' \
  '--wrong-length[make the length byte of replies one too large]' \
  '--late-ends[send the end mark of replies late]' \
  '--error[answer register reads with this error report]:code: ' \
  '--write-error[answer register writes with this error report]:code: ' \
  '--obey-ack-policy[answer only what ack_policy allows]' \
  '--from[start with the settings of this file]:file:_files' \
  '--state[keep the settings in this file]:file:_files' \
  '--unplug-after[hang up at this frame]:number: ' \
  '(--no-pace)--pace[take the time of a wire of 115200 baud]' \
  '(--pace)--no-pace[reply at once]' \
  '(- *)--version[show the version and exit]' \
  '(- *)'{-h,--help}'[show help and exit]'
