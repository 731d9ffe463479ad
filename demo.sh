#!/usr/bin/env bash
# The main job for real: sets this machine up, builds, starts a collector that stands for the analytics server,
# lets the sample host play a working day in a CAD program, and shows what has arrived.
# Leaves nothing behind but build/release.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

speed=200 # times as fast as in life

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

# Ends what still runs, whatever the reason is for which this script ends.
clean_up() {
  local status=$?
  trap '' INT TERM
  local job
  for job in $(jobs -p | sort -rn); do # what was started last goes first
    kill -TERM -- "-$job" 2>/dev/null || true
    wait "$job" 2>/dev/null || true
  done
  if [[ $status -gt 128 ]]; then
    echo "demo.sh: interrupted at this step: $step" >&2
  elif [[ $status -ne 0 ]]; then
    if [[ -s $work/collector.log ]]; then
      echo "What the collector said last:" >&2
      tail -n 5 "$work/collector.log" >&2
    fi
    echo "demo.sh: failed at this step: $step" >&2
  fi
  rm -rf "$work"
}
trap clean_up EXIT
trap 'exit 130' INT
trap 'exit 143' TERM

# Runs a command to its end, as a job with a process group of its own, so that all of it can be stopped and an
# interruption need not wait for it.
run() {
  set -m
  "$@" &
  set +m
  wait "$!"
}

announce "Setting up and building (the first time takes some minutes)"
cmake/set-up.sh
run cmake --preset release >"$work/configure.log" || { cat "$work/configure.log"; exit 1; }
run cmake --build --preset release --target qel-sample-host qel-collector
bin=build/release/bin
server_name=$(sed -n 's/^QEL_ANALYTICS_SERVER_HOST:STRING=//p' build/release/CMakeCache.txt)

announce "Making a certificate authority for this demonstration, and a certificate for $server_name"
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

announce "Playing samples/session.jsonl, $speed times as fast"
mkdir "$work/data"
run "$bin/qel-sample-host" --directory "$work/data" --session samples/session.jsonl --speed "$speed" \
  --server "$address" --ca "$work/ca.pem" --user demo --secret-file "$work/secret" >"$work/summary"
cat "$work/summary"

announce "What the collector has received, by category"
received() { sqlite3 -readonly "$@"; }
received -box "$work/received.db" "
  SELECT category, subcategory, SUM(count) AS items, COUNT(DISTINCT session) AS sessions,
         substr(group_concat(DISTINCT event), 1, 60) AS 'events (cut)'
  FROM events GROUP BY category, subcategory
  UNION ALL
  SELECT '(environment)', '', SUM(count), COUNT(DISTINCT session), '' FROM environments"

announce "Some of it in full"
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
  echo "These do not agree." >&2
  exit 1
fi
