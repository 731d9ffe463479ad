#!/usr/bin/env bash
# Demonstrates the client with a real server: installs missing packages, builds, starts a collector as the analytics
# server, plays a working day of a CAD program with the sample host, and shows the received items.
# Leaves nothing behind except build/release.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

speed=200 # how many times faster than real time

bold=''
plain=''
if [[ -t 1 ]]; then
  bold=$'\e[1m'
  plain=$'\e[0m'
fi

step='starting'
announce() {
  step=$1
  printf '\n%s== %s%s\n' "$bold" "$step" "$plain"
}

umask 077
work=$(mktemp --directory)

# Stops the jobs that are still running, however this script ends.
clean_up() {
  local status=$?
  trap '' INT TERM
  local job
  for job in $(jobs -p | sort -rn); do # starts with the newest job
    kill -TERM -- "-$job" 2>/dev/null || true
    wait "$job" 2>/dev/null || true
  done
  if [[ $status -gt 128 ]]; then
    echo "demo.sh: interrupted at this step: $step" >&2
  elif [[ $status -ne 0 ]]; then
    if [[ -s $work/collector.log ]]; then
      echo "Last messages of the collector:" >&2
      tail -n 5 "$work/collector.log" >&2
    fi
    echo "demo.sh: failed at this step: $step" >&2
  fi
  rm -rf "$work"
}
trap clean_up EXIT
trap 'exit 130' INT
trap 'exit 143' TERM

# Runs a command as a job with its own process group. So all its processes can be stopped, and an interrupted script
# does not wait for them.
run() {
  set -m
  "$@" &
  set +m
  wait "$!"
}

announce "Installing missing packages and building (the first build takes some minutes)"
cmake/set-up.sh
run cmake --preset release >"$work/configure.log" || { cat "$work/configure.log"; exit 1; }
run cmake --build --preset release --target qel-sample-host qel-collector
bin=build/release/bin
server_name=$(sed -n 's/^QEL_ANALYTICS_SERVER_HOST:STRING=//p' build/release/CMakeCache.txt)

announce "Making a temporary certificate authority, and a certificate for $server_name"
new_key=(-newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -days 2)
openssl req -x509 "${new_key[@]}" -subj "/CN=Demonstration CA" \
  -keyout "$work/ca.key" -out "$work/ca.pem" 2>/dev/null
openssl req -x509 -CA "$work/ca.pem" -CAkey "$work/ca.key" "${new_key[@]}" -subj "/CN=$server_name" \
  -addext "subjectAltName=DNS:$server_name" -addext "basicConstraints=critical,CA:FALSE" \
  -keyout "$work/server.key" -out "$work/server.pem" 2>/dev/null
openssl rand -hex 24 >"$work/secret"
printf 'demo:%s\n' "$(<"$work/secret")" >"$work/credentials"
openssl x509 -in "$work/server.pem" -noout -issuer -subject

announce "Starting the collector on a free port"
mkfifo "$work/collector.out"
set -m
"$bin/qel-collector" --listen 127.0.0.1:0 --certificate "$work/server.pem" --key "$work/server.key" \
  --credentials "$work/credentials" --store "$work/received.db" >"$work/collector.out" 2>"$work/collector.log" &
set +m
exec {collector_output}<"$work/collector.out"
read -r -t 20 -u "$collector_output" listening
echo "qel-collector: $listening"
address=${listening##* }

announce "Playing samples/session.jsonl at $speed times real time"
mkdir "$work/data"
run "$bin/qel-sample-host" --directory "$work/data" --session samples/session.jsonl --speed "$speed" \
  --server "$address" --ca "$work/ca.pem" --user demo --secret-file "$work/secret" >"$work/summary"
cat "$work/summary"

announce "Items that the collector received, by category"
received() { sqlite3 -readonly "$@"; }
received -box "$work/received.db" "
  SELECT category, subcategory, SUM(count) AS items, COUNT(DISTINCT session) AS sessions,
         substr(group_concat(DISTINCT event), 1, 60) AS 'events (cut)'
  FROM events GROUP BY category, subcategory
  UNION ALL
  SELECT '(environment)', '', SUM(count), COUNT(DISTINCT session), '' FROM environments"

announce "Some of the items in full"
received "$work/received.db" "
  SELECT text FROM environments LIMIT 1;
  SELECT text FROM events WHERE subcategory = 'Asserted' LIMIT 1;
  SELECT text FROM events WHERE event = 'SearchPerformed' LIMIT 1;
  SELECT text FROM events WHERE category = 'IssueListStorage' AND event = 'Removed' LIMIT 1" |
  python3 -m json.tool --json-lines --no-ensure-ascii

announce "Comparing"
sent=$(awk '$1 == "sent" { print $2 }' "$work/summary")
left=$(awk '$1 == "left" && $2 != "before" { print $2 }' "$work/summary")
arrived=$(received "$work/received.db" \
  "SELECT (SELECT SUM(count) FROM events) + (SELECT SUM(count) FROM environments)")
echo "The sample host has sent $sent rows and keeps $left; the collector has $arrived."
if [[ $sent -eq 0 || $left -ne 0 || $sent -ne $arrived ]]; then
  echo "The counts differ." >&2
  exit 1
fi
