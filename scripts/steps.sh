# Sourced by the scripts: says what is being done and how long it took, and keeps what the tools say in a log file.
#
#   start_log NAME             build/logs/NAME.log, begun anew, takes what the steps say
#   step WHAT COMMAND...       prints WHAT, runs the command, prints the time; when it fails, prints where the log is
#                              and its last lines, and ends the script
#
# On a terminal the running step shows the last line of the log (the count of a build, say). Elsewhere a step is one
# line, and a long one adds a line every 30 seconds. Any other command that ends a script is named too. A step runs in a
# subshell: it can change files, not variables.
set -E
# A step tells of its own failure.
tell_error() {
  [ "${BASH_SOURCE[1]}" = "${BASH_SOURCE[0]}" ] ||
    echo "${BASH_SOURCE[1]}: line ${BASH_LINENO[0]} failed: ${BASH_COMMAND%%$'\n'*}" >&2
}
trap tell_error ERR

start_log() {
  steps_log=$PWD/build/logs/$1.log
  mkdir -p "$PWD/build/logs"
  : > "$steps_log"
}

step() {
  local what=$1 begin=$SECONDS result=0 ticker
  shift
  printf '%s ... ' "$what"
  printf '== %s\n' "$what" >> "$steps_log"
  # The command runs in the foreground, where an interrupt reaches it.
  show_life "$what" "$begin" &
  ticker=$!
  set +e
  trap - ERR
  (
    # In a condition or a list, a function would go on behind its first failure.
    set -e
    trap tell_error ERR
    "$@"
  ) >> "$steps_log" 2>&1
  result=$?
  set -e
  trap tell_error ERR
  kill "$ticker" 2> /dev/null || true
  wait "$ticker" 2> /dev/null || true
  if [ -t 1 ]; then
    printf '\r\e[K%s ... ' "$what"
  fi
  if [ "$result" -eq 0 ]; then
    printf '%d s\n' $((SECONDS - begin))
    return
  fi
  printf 'FAILED after %d s\n' $((SECONDS - begin))
  {
    echo "The last lines of $steps_log:"
    tail -n 40 "$steps_log" | sed 's/^/  /'
  } >&2
  exit "$result"
}

# For as long as the script lives: the seconds since the step began and the last line of the log.
show_life() {
  local what=$1 begin=$2 now told=$2 text
  trap - ERR
  # The pause must not keep the output open when the step is over.
  while sleep 1 > /dev/null 2>&1 && kill -0 $$ 2> /dev/null; do
    now=$SECONDS
    text="$((now - begin)) s: $(tail -n 1 "$steps_log" | tr -d '\r')"
    if [ -t 1 ]; then
      text="$what ... $text"
      printf '\r\e[K%s' "${text:0:$(tput cols 2> /dev/null || echo 80) - 1}"
    elif [ $((now - told)) -ge 30 ]; then
      told=$now
      printf '\n  %s ' "${text:0:100}"
    fi
  done
}
