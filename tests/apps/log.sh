# orx log: reads a log from its end, and follows it when it grows, is emptied or is replaced
log="$work/public/Halvark/TESSEL/6.9.1/DEBUG.LOG"
PUBLIC='' fails 'the log: there is no folder*' log path
fails "$log: No such file or directory" log tail
mkdir "$work/public"
prints "$log" log path
prints '{*"Path": "*/DEBUGThread.LOG"*}' log path --thread --json
seq -f $'line %.0f\r' 30000 > "$log"
prints "$(seq -f 'line %.0f' 29991 30000)" log tail
prints "$(seq -f 'line %.0f' 10000 30000)" log tail -n 20001
succeeds log tail -n 0
printf 'a\tb\r\n\r\nopen' > "$log"
prints $'a b\n\nopen' log tail
prints '\[*{*"Line": ""*},*{*"Line": "open"*}*\]' log tail -n 2 --json
rejects_usage '-n: ' log tail -n -1
rejects_usage '-f excludes --json' log tail -f --json

wait_for() {  # LINES: until the follower has shown exactly these lines
  for ((i = 0; i < 300; ++i)); do
    [[ $(< "$work/shown") == "$1" ]] && return
    sleep 0.1
  done
  fail "log tail -f: $(< "$work/shown")" "  expected: $1"
}
for signal in INT TERM; do
  : > "$work/shown"
  printf 'one\r\ntwo\r\nhal' > "$log"
  "$orx" log tail -n 2 -f > "$work/shown" &
  wait_for 'two'
  printf 'f\r\nthree\r\n' >> "$log"
  wait_for $'two\nhalf\nthree'
  printf 'four\r\n' > "$log"
  wait_for $'two\nhalf\nthree\nfour'
  printf 'another that is longer\r\n' > "$log"
  wait_for $'two\nhalf\nthree\nfour\nanother that is longer'
  kill -s "$signal" $!
  wait $! || fail "log tail -f: status $? after $signal"
done
(while sleep 0.1; do echo more >> "$log"; done) &
{ "$orx" log tail -f 2> "$work/err"; echo $? > "$work/status"; } | true
kill $!
[[ $(cat "$work/status" "$work/err") == $'1\norx: standard output: '* ]] || fail "a closed pipe: $(< "$work/err")"
