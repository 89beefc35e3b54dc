#!/usr/bin/env bash
# Word error rate of voice capture on our own task phrases (tests/data/voice/
# task-phrases.txt, or the file given second: held-out-task-phrases.txt holds phrases
# written without looking at the task model's word lists, so it measures what the model
# does for phrases it was not made from), spoken by flite's "rms" voice and decoded by
# `daywyn transcribe`:
# with the generic model and pocketsphinx's default search ("before"), and with the
# task-phrase model mixed in and the faster search Daywyn uses ("after").
# Usage: scripts/measure-voice-wer.sh [BUILD_DIR [PHRASES_FILE [-v]]]
set -euo pipefail
build=${1:-build}
root=$(cd "$(dirname "$0")/.." && pwd)
phrases=${2:-$root/tests/data/voice/task-phrases.txt}
verbose=${3:-}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

i=0
while IFS= read -r phrase; do
  [ -n "$phrase" ] || continue
  flite -voice rms -t "$phrase" -o "$work/raw.wav" < /dev/null
  sox -D "$work/raw.wav" -r 16000 -c 1 -b 16 "$work/phrase-$i.wav" < /dev/null
  i=$((i + 1))
done < "$phrases"

measure() { # label, then environment assignments
  local label=$1; shift
  : > "$work/heard-$label.txt"
  for ((n = 0; n < i; n++)); do
    env "$@" "$build/daywyn" transcribe "$work/phrase-$n.wav" < /dev/null >> "$work/heard-$label.txt" 2>/dev/null \
      || echo >> "$work/heard-$label.txt"
  done
  python3 - "$phrases" "$work/heard-$label.txt" "$label" $verbose <<'PY'
import sys
said = [l.split() for l in open(sys.argv[1]) if l.strip()]
heard = [l.replace("|", " ").split() for l in open(sys.argv[2])]
def distance(a, b):
    row = list(range(len(b) + 1))
    for i, x in enumerate(a, 1):
        prev, row[0] = row[0], i
        for j, y in enumerate(b, 1):
            prev, row[j] = row[j], min(row[j] + 1, row[j - 1] + 1, prev + (x != y))
    return row[len(b)]
errors = sum(distance(s, h) for s, h in zip(said, heard))
words = sum(len(s) for s in said)
exact = sum(s == h for s, h in zip(said, heard))
print(f"{sys.argv[3]:>34}: WER {100.0 * errors / words:5.1f}% ({errors}/{words} words), "
      f"{exact}/{len(said)} phrases exact")
for s, h in zip(said, heard):
    if s != h and "-v" in sys.argv[4:]:
        print(f"    said: {' '.join(s)}\n   heard: {' '.join(h)}")
PY
}

echo "phrases: $i"
measure "before (generic, default search)" DAYWYN_TASK_LM=none DAYWYN_SPEECH_OPTIONS=default
measure "generic, Daywyn's search" DAYWYN_TASK_LM=none
measure "after (task model, Daywyn's search)" DAYWYN_TASK_LM=
