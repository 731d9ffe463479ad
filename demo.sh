#!/usr/bin/env bash
# Demonstrates the client with a real server: installs missing packages, builds, starts a collector as the analytics
# server, plays a working day of a CAD program with the sample host, and shows the received items. Writes a report of the
# session into a new temporary directory, beside copies of the databases.
# With --keep DIR, writes all this into DIR, and leaves the collector running with its page for readers.
# With --windows, plays it through Wine with the sample hosts for Windows, one with shared and one with static
# libraries, and once more with a wrong certificate authority. Leaves nothing behind then except files in build.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

windows_presets=()
keep=''
if [[ $# -eq 1 && $1 == --windows ]]; then
  windows_presets=(windows windows-static)
elif [[ $# -eq 2 && $1 == --keep ]]; then
  keep=$2
  if [[ -e $keep && -n $(ls -A "$keep") ]]; then
    echo "demo.sh: $keep is not an empty directory" >&2
    exit 2
  fi
  mkdir -p "$keep"
elif [[ $# -gt 0 ]]; then
  echo "usage: demo.sh [--windows | --keep DIR]" >&2
  exit 2
fi

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
home=$work # of the collector
if [[ -n $keep ]]; then
  home=$(realpath "$keep")
fi

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
    if [[ -s $home/collector.log ]]; then
      echo "Last messages of the collector:" >&2
      tail -n 5 "$home/collector.log" >&2
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
if [[ ${#windows_presets[@]} -gt 0 ]]; then
  cmake/set-up-windows.sh
else
  cmake/set-up.sh
fi
build() {
  local preset=$1
  shift
  run cmake --preset "$preset" >"$work/configure.log" || { cat "$work/configure.log"; exit 1; }
  run cmake --build --preset "$preset" --target "$@"
}
build release qel-sample-host qel-collector qel-support
for preset in "${windows_presets[@]}"; do
  build "$preset" qel-sample-host
done
bin=build/release/bin
server_name=$(sed -n 's/^QEL_ANALYTICS_SERVER_HOST:STRING=//p' build/release/CMakeCache.txt)

announce "Making a temporary certificate authority, and a certificate for $server_name"
new_key=(-newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -days 2)
if [[ ${#windows_presets[@]} -gt 0 ]]; then
  new_key=(-newkey rsa:2048 -nodes -days 2) # Wine 8 refuses some certificates with elliptic curves
fi
new_authority() {
  openssl req -x509 "${new_key[@]}" -subj "/CN=Demonstration CA" -keyout "$work/$1.key" -out "$work/$1.pem" 2>/dev/null
}
new_authority ca
openssl req -x509 -CA "$work/ca.pem" -CAkey "$work/ca.key" "${new_key[@]}" -subj "/CN=$server_name" \
  -addext "subjectAltName=DNS:$server_name,DNS:localhost" -addext "basicConstraints=critical,CA:FALSE" \
  -keyout "$home/server.key" -out "$home/server.pem" 2>/dev/null
openssl rand -hex 24 >"$work/secret"
printf 'demo:%s\n' "$(<"$work/secret")" >"$home/credentials"
openssl x509 -in "$home/server.pem" -noout -issuer -subject

announce "Starting the collector on a free port"
page=()
if [[ -n $keep ]]; then
  cp "$work/ca.pem" "$home"
  openssl rand -hex 12 >"$home/reader-secret"
  printf 'reader:%s\n' "$(<"$home/reader-secret")" >"$home/readers"
  page=(--admin 127.0.0.1:0 --readers "$home/readers")
fi
mkfifo "$work/collector.out"
set -m
"$bin/qel-collector" --listen 127.0.0.1:0 --certificate "$home/server.pem" --key "$home/server.key" \
  --credentials "$home/credentials" --store "$home/received.db" "${page[@]}" \
  >"$work/collector.out" 2>"$home/collector.log" &
collector=$!
set +m
exec {collector_output}<"$work/collector.out"
read -r -t 20 -u "$collector_output" listening
echo "qel-collector: $listening"
address=${listening##* }
if [[ -n $keep ]]; then
  read -r -t 20 -u "$collector_output" admin
fi

received() { sqlite3 -readonly "$@"; }

# Plays the session: play AUTHORITY SAMPLE-HOST...
play() {
  local authority=$1 data
  shift
  data=$(mktemp --directory "$work/data.XXXX")
  run "$@" --directory "$data" --session samples/session.jsonl --speed "$speed" \
    --server "$address" --ca "$work/$authority.pem" --user demo --secret-file "$work/secret" >"$work/summary"
  cat "$work/summary"
}

show_items() {
  announce "Items that the collector received, by category"
  received -box "$home/received.db" "
    SELECT category, subcategory, SUM(count) AS items, COUNT(DISTINCT session) AS sessions,
           substr(group_concat(DISTINCT event), 1, 60) AS 'events (cut)'
    FROM events GROUP BY category, subcategory
    UNION ALL
    SELECT '(environment)', '', SUM(count), COUNT(DISTINCT session), '' FROM environments"

  announce "Some of the items in full"
  received "$home/received.db" "
    SELECT text FROM environments LIMIT 1;
    SELECT text FROM events WHERE subcategory = 'Asserted' LIMIT 1;
    SELECT text FROM events WHERE event = 'SearchPerformed' LIMIT 1;
    SELECT text FROM events WHERE category = 'IssueListStorage' AND event = 'Removed' LIMIT 1" |
    python3 -m json.tool --json-lines --no-ensure-ascii
}

count_arrived() {
  received "$home/received.db" "SELECT (SELECT total(count) FROM events) + (SELECT total(count) FROM environments)" |
    cut -d . -f 1
}

# Compares what the last sample host has sent with what has arrived since the last comparison.
arrived_before=0
count() {
  sent=$(awk '$1 == "sent" { print $2 }' "$work/summary")
  left=$(awk '$1 == "left" && $2 != "before" { print $2 }' "$work/summary")
  local arrived_now
  arrived_now=$(count_arrived)
  arrived=$((arrived_now - arrived_before))
  arrived_before=$arrived_now
  echo "The sample host has sent $sent rows and keeps $left; the collector has $arrived."
}

compare() {
  announce "Comparing"
  count
  if [[ $sent -eq 0 || $left -ne 0 || $sent -ne $arrived ]]; then
    echo "The counts differ." >&2
    exit 1
  fi
}

# Keeps a report of the received session, and the databases.
write_report() {
  announce "Writing a report of this session from the collector's store"
  local target=$home
  if [[ -z $keep ]]; then
    target=$(mktemp --directory)
  fi
  run "$bin/qel-support" report "$home/received.db" --session last --output "$target/report.html"
  if [[ -z $keep ]]; then
    kill "$collector" && wait "$collector" # moves everything into the file
    cp "$home/received.db" "$target"
  fi
  cp -r "$work"/data.* "$target/data"
  echo "Try qel-support with the client's databases in $target/data, or with $target/received.db."
  echo "Open the report in a browser: $target/report.html"
}

# Leaves the collector running.
leave_page() {
  announce "The collector goes on with its page"
  disown "$collector"
  echo "Page:    https://localhost:${admin##*:}/ (the browser does not know the authority, $home/ca.pem)"
  echo "User:    reader"
  echo "Secret:  in $home/reader-secret"
  echo "Log:     $home/collector.log"
  echo "To stop: kill $collector"
  echo "The certificate is valid for two days. After that, browsers refuse the page."
}

# Runs a Windows program. Wine must not use the terminal, which belongs to another process group.
by_wine() { cmake/run-by-wine "$@" </dev/null 2> >(cat >&2); }

if [[ ${#windows_presets[@]} -eq 0 ]]; then
  announce "Playing samples/session.jsonl at $speed times real time"
  play ca "$bin/qel-sample-host"
  show_items
  compare
  write_report
  if [[ -n $keep ]]; then
    leave_page
  fi
  exit
fi

for preset in "${windows_presets[@]}"; do
  announce "Playing samples/session.jsonl with the program of the preset $preset"
  play ca by_wine "build/$preset/bin/qel-sample-host.exe"
  compare
done
show_items

new_authority wrong
for preset in "${windows_presets[@]}"; do
  announce "Playing with a wrong certificate authority and the preset $preset: nothing may be sent"
  play wrong by_wine "build/$preset/bin/qel-sample-host.exe"
  count
  if [[ $sent -ne 0 || $left -eq 0 || $arrived -ne 0 ]]; then
    echo "Rows were sent or lost." >&2
    exit 1
  fi
done
