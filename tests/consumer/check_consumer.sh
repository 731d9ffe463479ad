#!/bin/sh
# Lets the consumer play two sessions: one without a server, whose event must be kept, and one with a collector, which
# must receive both events. Takes the consumer, the collector, the server's name and a text that the consumer's standard
# error must hold. With "crash" as the fifth argument, the consumer also aborts in the middle of a session, whose event
# and crash record must be received, too. The system's message about the exception must stay.
set -eu
consumer=$1 collector=$2 name=$3 said=$4 crash=${5-}
work=$(mktemp -d)
server=
trap 'kill $server 2>/dev/null || true; rm -rf "$work"' EXIT
cd "$work"
umask 077
mkdir data
mkfifo address
echo "kept quiet" >secret
echo "consumer:kept quiet" >credentials
openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -subj "/CN=$name" \
  -addext "subjectAltName=DNS:$name" -keyout key -out certificate 2>log

timeout 60 "$consumer" data "$name" 127.0.0.1:1 certificate secret 2>errors
if [ "$crash" ]; then
  if timeout 60 "$consumer" data "$name" 127.0.0.1:1 certificate secret crash 2>>errors; then
    echo "the consumer was not aborted" && exit 1
  fi
  grep "terminate called" errors
fi
"$collector" --listen 127.0.0.1:0 --certificate certificate --key key --credentials credentials --store received.db \
  >address &
server=$!
read -r _ _ address <address
timeout 60 "$consumer" data "$name" "$address" certificate secret 2>>errors
kill $server
wait $server

cat errors
grep -q "$said" errors
received=$(sqlite3 received.db "SELECT count(*) FROM events WHERE text LIKE '%\"Borrowed\"%'")
crashed=$(sqlite3 received.db "SELECT count(*) FROM events WHERE text LIKE '%\"Crashed\"%the license is gone%'")
echo "received: $received, crashed: $crashed"
test "$received $crashed" = "$([ "$crash" ] && echo 3 1 || echo 2 0)"
