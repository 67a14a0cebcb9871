#!/bin/bash
# A cluster of etcd on this machine, to try the sharing of settings: members on loopback with TLS, and
# users. Needs the packages of `scripts/install_packages.sh cluster`.
#
#   scripts/cluster.sh start        makes the cluster, or starts it again; prints how to use it
#   scripts/cluster.sh start N      starts member N (1, 2, 3) again
#   scripts/cluster.sh stop         stops all members; their data stays
#   scripts/cluster.sh kill N       ends a member as a crash does
#   scripts/cluster.sh pause N      stops a member without ending it; its connections stay open
#   scripts/cluster.sh resume N     lets it go on
#   scripts/cluster.sh wipe N       removes the data of a stopped member, and makes it a new one
#   scripts/cluster.sh restore F    replaces the cluster by one with the content of the file F, which
#                                   "ctl snapshot save F" has made
#   scripts/cluster.sh leader       prints the number of the leader
#   scripts/cluster.sh ctl ...      runs etcdctl as root of the cluster
#
# CLUSTER_DIR (build/cluster) has everything, CLUSTER_MEMBERS (3) is the number of members, and
# CLUSTER_OPTIONS are further options of etcd. The file `environment` there has the variables for a
# program; the users are admin, who may change the settings, and reader.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
dir=${CLUSTER_DIR:-$root/build/cluster}
members=${CLUSTER_MEMBERS:-3}
prefix=/team/settings

fail() {
  echo "scripts/cluster.sh: $*" >&2
  exit 1
}

is_running() { [[ -f $dir/$1.pid ]] && kill -0 "$(<"$dir/$1.pid")" 2>/dev/null; }
url_of() { sed -n "$1p" "$dir/urls"; }

# Prints this many ports that nothing listens on, below those that the system gives to clients.
free_ports() {
  local port count=0
  while [[ $count -lt $1 ]]; do
    port=$((20000 + RANDOM % 12000))
    if ! (exec 3<>"/dev/tcp/127.0.0.1/$port") 2>/dev/null; then
      echo "$port"
      count=$((count + 1))
    fi
  done
}

make_certificates() {
  local curve=(-newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -days 3650)
  openssl req -x509 "${curve[@]}" -subj /CN=settings-test-ca -keyout "$dir/ca.key" -out "$dir/ca.crt"
  openssl req "${curve[@]}" -subj /CN=localhost -keyout "$dir/server.key" -out "$dir/server.csr"
  openssl x509 -req -in "$dir/server.csr" -CA "$dir/ca.crt" -CAkey "$dir/ca.key" -CAcreateserial \
    -days 3650 -out "$dir/server.crt" -extfile <(echo \
      'subjectAltName=DNS:localhost,IP:127.0.0.1
extendedKeyUsage=serverAuth,clientAuth')
}

make_directory() {
  local ports client peer number list=
  mkdir -p "$dir"
  chmod 700 "$dir"
  make_certificates 2>"$dir/certificates.log" || fail "no certificates: $dir/certificates.log"
  mapfile -t ports < <(free_ports $((2 * members)))
  : >"$dir/urls"
  : >"$dir/peers"
  for ((number = 1; number <= members; ++number)); do
    client=${ports[2 * number - 2]} peer=${ports[2 * number - 1]}
    echo "https://127.0.0.1:$client" >>"$dir/urls"
    echo "http://127.0.0.1:$peer" >>"$dir/peers"
    list+="${list:+,}m$number=http://127.0.0.1:$peer"
  done
  echo "$list" >"$dir/initial"
  echo new >"$dir/state"
  echo "$dir" >"$dir/token"
  for user in root admin reader; do
    (
      umask 077
      printf '%s\n%s\n' "$user" "$(openssl rand -hex 12)" >"$dir/$user.credentials"
    )
  done
  cat >"$dir/environment" <<LIST
export SETTINGS_WORKGROUP=$(paste -sd, "$dir/urls")$prefix
export SETTINGS_WORKGROUP_CA=$dir/ca.crt
export SETTINGS_WORKGROUP_CREDENTIALS=$dir/admin.credentials
LIST
}

start_member() {
  local client peer
  is_running "$1" && return
  client=$(url_of "$1") peer=$(sed -n "$1p" "$dir/peers")
  # In a session of its own, so that the end of a terminal does not end it.
  # shellcheck disable=SC2086
  setsid etcd --name "m$1" --data-dir "$dir/m$1" --listen-client-urls "$client" \
    --advertise-client-urls "$client" --listen-peer-urls "$peer" \
    --initial-advertise-peer-urls "$peer" --initial-cluster "$(<"$dir/initial")" \
    --initial-cluster-state "$(<"$dir/state")" --initial-cluster-token "$(<"$dir/token")" \
    --cert-file "$dir/server.crt" --key-file "$dir/server.key" --max-txn-ops 10000 \
    --auth-token-ttl 300 ${CLUSTER_OPTIONS:-} >>"$dir/m$1.log" 2>&1 </dev/null &
  echo $! >"$dir/$1.pid"
}

password_of() { sed -n 2p "$dir/$1.credentials"; }

ctl() {
  local user=()
  [[ -f $dir/ready ]] && user=(--user "root:$(password_of root)")
  ETCDCTL_API=3 etcdctl --cacert "$dir/ca.crt" --endpoints "${endpoints:-$(paste -sd, "$dir/urls")}" \
    --dial-timeout 1s --command-timeout 4s "${user[@]}" "$@"
}

wait_for_cluster() {
  local attempt
  for ((attempt = 0; attempt < 100; ++attempt)); do
    ctl get / >/dev/null 2>&1 && return
    sleep 0.1
  done
  fail "the cluster does not answer; its logs are in $dir"
}

make_users() {
  ctl user add "root:$(password_of root)"
  ctl user grant-role root root
  ctl role add settings-writer
  ctl role grant-permission settings-writer --prefix=true readwrite "$prefix"
  ctl role add settings-reader
  ctl role grant-permission settings-reader --prefix=true read "$prefix"
  ctl user add "admin:$(password_of admin)"
  ctl user grant-role admin settings-writer
  ctl user add "reader:$(password_of reader)"
  ctl user grant-role reader settings-reader
  ctl auth enable
}

start() {
  local number
  command -v etcd >/dev/null || fail "etcd is missing. Run: scripts/install_packages.sh cluster"
  if [[ -n ${1:-} ]]; then
    start_member "$1"
    return
  fi
  [[ -f $dir/urls ]] || make_directory
  for ((number = 1; number <= $(wc -l <"$dir/urls"); ++number)); do start_member "$number"; done
  wait_for_cluster
  if [[ ! -f $dir/ready ]]; then
    make_users >"$dir/users.log" 2>&1 || fail "no users: $dir/users.log"
    touch "$dir/ready"
  fi
  echo "The cluster runs. For programs that use it:"
  sed 's/^/  /' "$dir/environment"
}

signal() {
  is_running "$2" || fail "member $2 does not run"
  kill "-$1" "$(<"$dir/$2.pid")"
  if [[ $1 == KILL ]]; then
    while is_running "$2"; do sleep 0.05; done
  fi
}

stop() {
  local number
  for ((number = 1; number <= $(wc -l <"$dir/urls"); ++number)); do
    is_running "$number" || continue
    kill -CONT "$(<"$dir/$number.pid")"
    kill "$(<"$dir/$number.pid")"
    while is_running "$number"; do sleep 0.05; done
  done
}

# While one is elected, it waits.
leader() {
  local line number attempt
  for ((attempt = 0; attempt < 60; ++attempt)); do
    for ((number = 1; number <= $(wc -l <"$dir/urls"); ++number)); do
      is_running "$number" || continue
      line=$(endpoints=$(url_of "$number") ctl endpoint status 2>/dev/null) || continue
      [[ $(cut -d, -f5 <<<"$line") == " true" ]] && echo "$number" && return
    done
    sleep 0.25
  done
  fail "there is no leader"
}

# Tries a command until it succeeds: members are changed only while the others have been well for some
# seconds.
patiently() {
  local attempt
  for ((attempt = 0; attempt < 60; ++attempt)); do
    "$@" >/dev/null 2>&1 && return
    sleep 0.25
  done
  "$@"
}

# A member that has lost its data can only come back as a new one.
wipe() {
  local id
  is_running "$1" && fail "member $1 runs"
  id=$(ctl member list | awk -F', ' -v name="m$1" '$3 == name { print $1 }')
  patiently ctl member remove "$id"
  rm -rf "${dir:?}/m$1"
  patiently ctl member add "m$1" --peer-urls "$(sed -n "$1p" "$dir/peers")"
  echo existing >"$dir/state"
}

restore() {
  local number
  stop
  echo "$dir $(date +%s%N)" >"$dir/token"
  echo new >"$dir/state"
  for ((number = 1; number <= $(wc -l <"$dir/urls"); ++number)); do
    rm -rf "${dir:?}/m$number"
    ETCDCTL_API=3 etcdctl snapshot restore "$1" --name "m$number" --data-dir "$dir/m$number" \
      --initial-cluster "$(<"$dir/initial")" --initial-cluster-token "$(<"$dir/token")" \
      --initial-advertise-peer-urls "$(sed -n "${number}p" "$dir/peers")" >"$dir/restore.log" 2>&1 ||
      fail "not restored: $dir/restore.log"
  done
  start
}

case ${1:-} in
  start | stop | leader) "$@" ;;
  kill) signal KILL "$2" ;;
  pause) signal STOP "$2" ;;
  resume) signal CONT "$2" ;;
  wipe) wipe "$2" ;;
  restore) restore "$2" ;;
  ctl) "$@" ;;
  *) fail "start [N], stop, kill N, pause N, resume N, wipe N, restore FILE, leader or ctl" ;;
esac
