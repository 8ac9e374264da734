# shellcheck shell=bash
# To be sourced: configure PRESET OPTION... configures build/PRESET if it is not configured yet. Runs in the root of the
# checkout.

# A build folder that was copied or moved with its checkout still refers to the checkout that configured it.
discard_foreign_build() {
  local source
  source=$(sed -n 's/^CMAKE_HOME_DIRECTORY:INTERNAL=//p' "$1/CMakeCache.txt" 2> /dev/null || true)
  [ -z "$source" ] || [ "$source" -ef . ] || rm -rf "$1"
}

configure() {
  local build=build/$1 option
  discard_foreign_build "$build"
  if [ -f "$build/build.ninja" ] && [ -f "$build/CMakeCache.txt" ]; then
    local -i missing=0
    for option in "${@:2}"; do
      grep -q "^${option#-D}\$" <(sed 's/:[A-Z]*=/=/' "$build/CMakeCache.txt") || missing=1
    done
    [ $missing = 1 ] || return 0
  fi
  cmake --preset "$@"
}
