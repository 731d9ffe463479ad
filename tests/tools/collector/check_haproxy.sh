#!/usr/bin/env bash
# Checks deploy/collector/haproxy.cfg: HAProxy before two collectors that share a store. Packages arrive, with the
# client's address in the log, also after one collector has stopped. Takes the collector and the repository's root.
# Without HAProxy, says so and ends with status 77.
set -euo pipefail
collector=$1
root=$2

haproxy=$(PATH=$PATH:/usr/sbin command -v haproxy) || {
  echo "Skipped: there is no haproxy (Debian: haproxy)."
  exit 77
}

umask 077
work=$(mktemp --directory)
servers=()
clean_up() {
  [[ ${#servers[@]} -eq 0 ]] || kill "${servers[@]}" 2>/dev/null || true
  wait
  rm -rf "$work"
}
trap clean_up EXIT
fail() {
  echo "$1" >&2
  tail -n 5 "$work"/*.log >&2
  exit 1
}
# Retries a command for ten seconds.
eventually() {
  local attempt
  for attempt in {1..50}; do
    "$@" && return
    sleep 0.2
  done
  fail "after ${attempt} attempts: $*"
}

openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -days 2 -subj /CN=localhost \
  -addext subjectAltName=DNS:localhost -keyout "$work/key.pem" -out "$work/certificate.pem" 2>/dev/null
echo "user:secret" >"$work/users"

# Free ports: for HAProxy, and two for each collector.
read -r -a ports < <(python3 -c '
import socket
sockets = [socket.create_server(("127.0.0.1", 0)) for _ in range(5)]
print(*(s.getsockname()[1] for s in sockets))')
public=${ports[0]}
start_collector() {
  "$collector" --listen "127.0.0.1:$2" --admin "127.0.0.1:$3" --behind 127.0.0.1 --certificate "$work/certificate.pem" \
    --key "$work/key.pem" --credentials "$work/users" --store "$work/store.db" >/dev/null 2>"$work/$1.log" &
  servers+=("$!")
  eventually curl --silent --fail --output /dev/null "http://127.0.0.1:$3/ready"
}
start_collector first "${ports[1]}" "${ports[2]}"
start_collector second "${ports[3]}" "${ports[4]}"

sed -e "s/maxconn .*/maxconn 100/" -e "/^  \(user\|group\) haproxy$/d" -e "s/bind :443/bind 127.0.0.1:$public/" \
  -e "s/192.0.2.11:8443/127.0.0.1:${ports[1]} port ${ports[2]}/" \
  -e "s/192.0.2.12:8443/127.0.0.1:${ports[3]} port ${ports[4]}/" \
  "$root/deploy/collector/haproxy.cfg" >"$work/haproxy.cfg"
"$haproxy" -c -q -f "$work/haproxy.cfg"
"$haproxy" -db -f "$work/haproxy.cfg" >"$work/haproxy.log" 2>&1 &
servers+=("$!")

send() {
  curl --silent --fail --output /dev/null --cacert "$work/certificate.pem" --user user:secret --interface 127.0.0.2 \
    --resolve "localhost:$public:127.0.0.1" --header "Content-Type: application/json" \
    --data "{\"version\": \"3.1\", \"events\": [{\"Event\": \"$1\"}]}" \
    "https://localhost:$public/authenticated/customer-care.php"
}
eventually send one
grep -q -F 127.0.0.2 "$work"/first.log "$work"/second.log || fail "The log does not have the client's address."

# Stops the collector that served the client. The other one gets the next connection, before any check has failed.
served=0
grep -q -F 127.0.0.2 "$work/second.log" && served=1
kill "${servers[served]}"
wait "${servers[served]}" || fail "The stopped collector ended with status $?."
send two || fail "The other collector did not get the package."
send one
stored=$(sqlite3 -readonly "$work/store.db" "SELECT group_concat(event) FROM (SELECT event FROM events ORDER BY id)")
[[ $stored == one,two ]] || fail "The store has: $stored"
echo "HAProxy passes packages to the collector that is ready."
