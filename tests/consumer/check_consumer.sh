#!/bin/sh
# Lets the consumer play two sessions: one without a server, whose event must be kept, and one with a collector, which
# must receive both events. Takes the consumer, the collector, the server's name and a text that the consumer's standard
# error must hold.
set -eu
consumer=$1 collector=$2 name=$3 said=${4-}
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
echo "received: $received"
test "$received" = 2
