#!/usr/bin/env bash
# Runs a command inside a private network namespace with only loopback up, so that the servers the
# tests start never announce themselves on the machine's networks. Where no namespace can be made
# (no privileges, no user namespaces), says so and exits 77, which CTest reports as skipped.
set -u
if [ "${MDB_IN_NETNS:-}" != 1 ]; then
  for flags in -n -rn; do
    if unshare $flags true 2>/dev/null; then
      exec unshare $flags env MDB_IN_NETNS=1 "$0" "$@"
    fi
  done
  echo "SKIP: this machine cannot make a private network namespace (unshare -n), which the server tests need"
  exit 77
fi
if ! ip link set lo up 2>/dev/null; then
  echo "SKIP: loopback cannot be brought up in the network namespace"
  exit 77
fi
exec "$@"
