# shellcheck shell=bash
# To be sourced: install_packages PACKAGE... installs the missing packages. With ORX_NO_INSTALL=1 it only prints their
# names, since the build may find the libraries elsewhere.

# Another run of the package manager may take some minutes.
apt_get=(apt-get -q -o DPkg::Lock::Timeout=600)

can_be_root() {
  [ "$(id -u)" = 0 ] && return
  command -v sudo > /dev/null && { [ -t 0 ] || sudo -n true 2> /dev/null; }
}

as_root() {
  if [ "$(id -u)" = 0 ]; then "$@"; else sudo "$@"; fi
}

# apt-get has no timeout for the lock of the package lists.
update_package_lists() {
  local errors attempts=0
  until errors=$(LC_ALL=C as_root "${apt_get[@]}" update 2>&1 > /dev/null); do
    attempts=$((attempts + 1))
    if [ "$attempts" -gt 120 ] || [[ $errors != *'Could not get lock'* ]]; then
      printf '%s\n' "$errors" >&2
      return 1
    fi
    [ "$attempts" -gt 1 ] || echo "Waiting for another run of the package manager" >&2
    sleep 5
  done
}

install_packages() {
  if ! command -v apt-get > /dev/null; then
    echo "This is not a Debian system. It needs these packages or their equivalents: $*" >&2
    return
  fi
  local package missing=()
  for package in "$@"; do
    [ "$(dpkg-query -W -f '${db:Status-Status}' "$package" 2> /dev/null)" = installed ] || missing+=("$package")
  done
  [ ${#missing[@]} -gt 0 ] || return 0
  if [ "${ORX_NO_INSTALL:-}" = 1 ]; then
    echo "Not installed: ${missing[*]}" >&2
    return
  fi
  if ! can_be_root; then
    printf '%s\n' "Packages are missing. An administrator must run this command:" \
      "apt-get update && apt-get install -y --no-install-recommends ${missing[*]}" >&2
    return 1
  fi
  echo "Installing ${missing[*]}" >&2
  update_package_lists
  as_root env DEBIAN_FRONTEND=noninteractive "${apt_get[@]}" install -y --no-install-recommends "${missing[@]}" >&2
}

# shellcheck disable=SC2034  # for the scripts that source this one
build_packages=(cmake ninja-build g++ libxml2-dev libsqlite3-dev libutf8proc-dev libcli11-dev nlohmann-json3-dev pkg-config)
# shellcheck disable=SC2034
test_packages=(libgtest-dev)
