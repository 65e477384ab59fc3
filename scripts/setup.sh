#!/usr/bin/env bash
# Installs the Debian packages the build needs, when any is missing; with
# --tests also those the tests need (fuzzers, the one-node render farm, the
# browser test). As root it runs apt-get; otherwise it prints the apt-get
# line and stops.
set -euo pipefail

packages=(
  cmake make g++ gcc ccache pkgconf
  googletest libgtest-dev libbenchmark-dev
  nlohmann-json3-dev
  libopenimageio-dev libopenexr-dev libopencolorio-dev libcli11-dev libcpp-httplib-dev
  fonts-dejavu-core
  dpkg-dev  # dpkg-shlibdeps: the Debian package's dependencies
)
if [[ "${1:-}" == "--tests" ]]; then
  packages+=(
    gcc-multilib g++-multilib qemu-user
    openimageio-tools
    clang libclang-rt-14-dev
    slurm-wlm munge
    chromium nodejs
    curl
  )
  # Debian's nodejs comes without npm; other builds of it bring their own.
  command -v npm >/dev/null 2>&1 || packages+=(npm)
fi

# The browser test's npm packages (tests/browser/node_modules), from its
# lock file, once node is there.
browser_packages() {
  [[ "${1:-}" == "--tests" ]] || return 0
  local folder
  folder="$(cd "$(dirname "$0")/.." && pwd)/tests/browser"
  [[ -d "$folder/node_modules/playwright-core" ]] && return 0
  echo "glintwave setup: npm ci in tests/browser"
  (cd "$folder" && npm ci --no-audit --no-fund)
}

missing=()
for p in "${packages[@]}"; do
  status=$(dpkg-query -W -f='${Status}' "$p" 2>/dev/null || true)
  [[ "$status" == "install ok installed" ]] || missing+=("$p")
done

if ((${#missing[@]} == 0)); then
  browser_packages "${1:-}"
  exit 0
fi

line="apt-get install -y --no-install-recommends ${missing[*]}"
if [[ $(id -u) -ne 0 ]]; then
  echo "glintwave setup: missing Debian packages: ${missing[*]}" >&2
  echo "Run as root:  apt-get update && $line" >&2
  exit 1
fi
echo "glintwave setup: installing ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
apt-get update -qq
$line
browser_packages "${1:-}"
