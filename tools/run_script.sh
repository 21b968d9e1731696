#!/bin/bash
# Runs one session script in a project of its own and compares what it prints with NAME.out.
#
#   run_script.sh CUTROOM NAME.cut
#
# NAME.setup, if it is there, is run first as a shell script that finds CUTROOM (the command),
# PROJECT (the project's folder, not made yet) and DATA (the folder of test data) in its
# environment; it imports what the session works on. With CUTROOM_UPDATE=1 the output that differs
# is written to NAME.out instead.
set -u
export CUTROOM; CUTROOM=$(readlink -f "$1")
name=$(readlink -f "${2%.cut}")
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
export PROJECT=$folder/project
export DATA; DATA=$(dirname "$name")/../data
export LC_ALL=C.UTF-8 TZ=UTC

if [[ -e $name.setup ]]; then
    bash -e "$name.setup" >"$folder/setup" 2>&1 || { cat "$folder/setup"; echo "setup failed"; exit 1; }
fi
cd "$folder" || exit 1
"$CUTROOM" -p "$PROJECT" shell --repeatable "$name.cut" >"$folder/out" 2>"$folder/err"
status=$?
if ! diff -u "$name.out" "$folder/out"; then
    cat "$folder/err"
    [[ ${CUTROOM_UPDATE:-} == 1 ]] && cp "$folder/out" "$name.out"
    exit 1
fi
if [[ $status != 0 ]]; then
    cat "$folder/err"
    echo "exit status $status"
    exit 1
fi
