#!/usr/bin/env bash
# Runs a command inside a private network namespace with only loopback up, so that the servers that
# tests and benchmarks start never announce themselves on the machine's networks. Where no
# namespace can be made (no privileges, no user namespaces), says so and exits 77, which CTest
# reports as skipped.
# With MDB_NETNS_VETH=1 it also makes a veth pair, vsrv 10.77.0.1 and vcli 10.77.0.2, for clients
# that look for their network on interfaces other than loopback; multicast leaves by vcli.
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
if [ "${MDB_NETNS_VETH:-}" = 1 ]; then
  if ! { ip link add vsrv type veth peer name vcli && ip addr add 10.77.0.1/30 dev vsrv &&
         ip addr add 10.77.0.2/30 dev vcli && ip link set vsrv up && ip link set vcli up &&
         ip route add 224.0.0.0/4 dev vcli; } 2>/dev/null; then
    echo "SKIP: no veth pair can be made in the network namespace"
    exit 77
  fi
  # Without IPv6 on the pair, no duplicate address detection delays the first bind.
  sysctl -qw net.ipv6.conf.vsrv.disable_ipv6=1 net.ipv6.conf.vcli.disable_ipv6=1 2>/dev/null || sleep 3
fi
exec "$@"
