#!/usr/bin/env bash
# run_model.sh PROGRAM KIND MODEL: gives the cases of that kind, made in the model's folder, to the program, as many as
# the form of the proof says.
set -euo pipefail
count=2000
[ "${QANHELPER_PROOF:-}" != full ] || count=100000
python3 -B "$3/cases.py" "$2" "$count" "${QANHELPER_PROOF_SEED:-1}" | "$1"
