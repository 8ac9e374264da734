#!/usr/bin/env bash
# Builds the library and the command-line host, then runs the host with the arguments given. Without arguments it shows
# the commands and the sample suite. ORX_NO_INSTALL=1 installs no packages.
set -euo pipefail
root=$(CDPATH='' cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
. "$root/cmake/install_packages.sh"
. "$root/cmake/configure.sh"

# The build writes to standard error, so that standard output is only that of the host.
build_host() {
  cd "$root"
  install_packages "${build_packages[@]}"
  configure release
  local build=(cmake --build --preset release --target orx-cli)
  if ! "${build[@]}" -- -n | grep -q 'no work to do'; then
    echo "Building orx" >&2
    "${build[@]}"
  fi
}
(build_host) >&2

orx=$root/build/release/apps/orx/orx
[ $# = 0 ] || exec "$orx" "$@"

"$orx" --help
export ORX_DRIVES=$root/examples/suite/drives
show() {
  printf '\n$ orx %s %s "%s"\n' "$@"
  "$orx" "$@"
}
echo "The sample suite, whose drives are in $ORX_DRIVES"
show list show 'C:\Projects\projects.qpl'
show project show 'C:\Projects\Kestrel Ridge\North Pit\north_pit.qpr'
show project show 'C:\Projects\Gruental\Stollen 4\stollen_4.qpr'
