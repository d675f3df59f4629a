#!/usr/bin/env bash
# run_model.sh PROGRAM MODEL: gives the cases of the model's folder to the program, as many as the form of the proof says.
set -euo pipefail
count=2000
[ "${QANHELPER_PROOF:-}" != full ] || count=100000
python3 -B "$2/cases.py" "$count" "${QANHELPER_PROOF_SEED:-1}" | "$1"
