#!/usr/bin/env bash
# Installs the Debian packages the project needs, when they are missing and we run as root.
# Without root it only reports what is missing; the build then fails with a clear message.
set -euo pipefail

packages=(cmake make g++ pkg-config libsqlite3-dev libupnp-dev libgtest-dev googletest libxml2-dev)
# The mdb tool's media scanner reads tags and stream properties with these libraries; ffmpeg makes
# the sample media library of the demo and of the tool's tests.
packages+=(libtag1-dev libexif-dev libjpeg-dev libpng-dev libavformat-dev libavcodec-dev libavutil-dev ffmpeg)
# The media server mdbd serves files with libmicrohttpd; its tests drive it with a real UPnP
# control point (GUPnP through Python) inside a network namespace of their own (iproute2).
packages+=(libmicrohttpd-dev python3-gi gir1.2-gupnp-1.6 gir1.2-gupnp-av-1.0 gir1.2-gssdp-1.6 iproute2 util-linux)
# The second client of mdbd's tests is Node.js (node-ssdp, upnp-device-client from npm).
if ! command -v npm >/dev/null; then
  packages+=(nodejs npm)
fi
if [ "${MDB_WITH_FUZZ:-0}" = 1 ]; then
  packages+=(clang libclang-rt-14-dev)
fi
if [ "${MDB_WITH_COVERAGE:-0}" = 1 ]; then
  packages+=(gcovr)
fi
# The server benchmark compares mdbd with MiniDLNA, which it starts itself.
if [ "${MDB_WITH_MINIDLNA:-0}" = 1 ]; then
  packages+=(minidlna)
fi
if [ -n "${MDB_EXTRA_PACKAGES:-}" ]; then
  read -r -a extra <<<"$MDB_EXTRA_PACKAGES"
  packages+=("${extra[@]}")
fi

# The npm packages of the Node.js client, pinned by its lock file, below tests/server/node_client.
# Offline, the test that needs them is skipped.
install_node_client() {
  local dir
  dir="$(dirname "$0")/../tests/server/node_client"
  if command -v npm >/dev/null && [ ! -d "$dir/node_modules" ]; then
    npm ci --prefix "$dir" --no-audit --no-fund --loglevel=error >/dev/null ||
      echo "the npm packages of the Node.js client test could not be installed; that test will be skipped" >&2
  fi
}

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done
if [ ${#missing[@]} -eq 0 ]; then
  install_node_client
  exit 0
fi

if [ "$(id -u)" -ne 0 ]; then
  echo "missing Debian packages: ${missing[*]} (run as root to install them)" >&2
  install_node_client
  exit 0
fi
echo "installing: ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
apt-get update -qq
# Packages that bring a service (minidlna) must not start it: it would announce itself on the
# machine's networks. policy-rc.d refuses every start during the installation.
policy=/usr/sbin/policy-rc.d
if [ ! -e "$policy" ]; then
  printf '#!/bin/sh\nexit 101\n' >"$policy" && chmod +x "$policy"
  trap 'rm -f "$policy"' EXIT
fi
apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
if [[ " ${missing[*]} " == *" minidlna "* ]] && command -v systemctl >/dev/null; then
  systemctl disable --now minidlna >/dev/null 2>&1 || true
fi
install_node_client
