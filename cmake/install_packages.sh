# To be sourced: install_packages PACKAGE... installs what is missing, so that a second run asks nobody.

as_root() {
  if [ "$(id -u)" = 0 ]; then "$@"; else sudo "$@"; fi
}

install_packages() {
  if ! command -v apt-get > /dev/null; then
    echo "This is no Debian system; these packages, or their like, are needed: $*" >&2
    return
  fi
  local package missing=()
  for package in "$@"; do
    [ "$(dpkg-query -W -f '${db:Status-Status}' "$package" 2> /dev/null)" = installed ] || missing+=("$package")
  done
  [ ${#missing[@]} -gt 0 ] || return 0
  echo "Installing ${missing[*]}" >&2
  as_root apt-get update -q >&2
  as_root env DEBIAN_FRONTEND=noninteractive apt-get install -q -y --no-install-recommends "${missing[@]}" >&2
}

build_packages=(cmake ninja-build g++ libxml2-dev libsqlite3-dev libutf8proc-dev libcli11-dev nlohmann-json3-dev)
test_packages=(libgtest-dev pkg-config)
