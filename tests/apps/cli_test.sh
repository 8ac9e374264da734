#!/usr/bin/env bash
# cli_test.sh ORX GROUP: runs the cases in GROUP.sh, in a project folder of a temporary suite with its own registries.
set -uo pipefail
program=$1
orx=$program  # or a function that runs $program in special conditions
cases=$(realpath -e "$(dirname "${BASH_SOURCE[0]}")/$2.sh") || exit 1
failures=0
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/Süd Feld/Grube 1" "$work/c/Projects/Pit 2"
cd "$work/Süd Feld/Grube 1" || exit 1
export ORX_DRIVES=$work ORX_USER_REGISTRY=$work/user.db ORX_MACHINE_REGISTRY=$work/machine.db PUBLIC=$work/public USER=ann

fail() {  # LINE...
  printf '%s\n' "$@" >&2
  failures=$((failures + 1))
}

# STATUS STDOUT STDERR ARGUMENT...: the host exits with the status, and the patterns match the whole of its output.
expect() {
  local status=$1 out_pattern=$2 err_pattern=$3 out err actual
  shift 3
  out=$("$orx" "$@" 2> "$work/err")
  actual=$?
  err=$(cat "$work/err")
  # shellcheck disable=SC2053  # the right sides are patterns
  [[ $actual == "$status" && $out == $out_pattern && $err == $err_pattern ]] ||
    fail "orx $* (expected $status, '$out_pattern', '$err_pattern')" "  status: $actual" "  stdout: $out" "  stderr: $err"
}

prints() { expect 0 "$1" '' "${@:2}"; }               # STDOUT ARGUMENT...
succeeds() { expect 0 '' '' "$@"; }                   # ARGUMENT...
fails() { expect 1 '' "orx: $1" "${@:2}"; }           # REASON ARGUMENT...
rejects_usage() { expect 2 '' "orx: $1*" "${@:2}"; }  # REASON ARGUMENT...

unchanged() {  # FILE COMMAND...: the command leaves the file as it was, or missing
  local file=$1 before
  shift
  before=$(cksum "$file" 2>&1)
  "$@"
  [[ $(cksum "$file" 2>&1) == "$before" ]] || fail "orx changed $file: $*"
}

repeat() { printf "$1%.0s" $(seq "$2"); }  # TEXT COUNT
limit_file_size() (ulimit -Sf 1 && exec "$program" "$@")  # ARGUMENT...: a write beyond 1 KiB fails

# shellcheck source=/dev/null
. "$cases" || fail "$cases did not run to its end"
[[ -z $(find "$work" -name '*.tmp*' -o -name '.*.qp?*') ]] || fail 'temporary files remain'
exit $((failures > 0))
