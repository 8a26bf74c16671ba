#!/usr/bin/env bash
# Builds the demo document resources/demo/Demo.composition with velloran-cli:
# a lower third that slides in, a clock, a ticker, a logo box, keyframes,
# two stop frames and a poster frame. Run from the repository root after a
# build: scripts/make-demo.sh [BUILD_DIR]
set -euo pipefail
BUILD_DIR=${1:-build}
CLI="$BUILD_DIR/src/cli/velloran-cli"
COMPONENTS=resources/standard-components
DEMO=resources/demo/Demo.composition
EDITS=$(mktemp /tmp/velloran-demo.XXXXXX.json)
trap 'rm -f "$EDITS"' EXIT

rm -rf "$DEMO"
"$CLI" doc new --mode "1080i25 RGBA" --duration 12 "$DEMO"
cat > "$EDITS" <<JSON
[
  {"op": "composition", "backgroundMode": 1, "backgroundColor": "#203040", "showsSafeZones": true,
   "posterFrameTimepoint": 3},
  {"op": "add", "path": "$COMPONENTS/Box.qtz", "title": "Logo Box", "inputs": {"Color": "#1F59BF"}},
  {"op": "set", "component": "Logo Box", "key": "inputWidth", "value": 240},
  {"op": "set", "component": "Logo Box", "key": "inputHeight", "value": 135},
  {"op": "set", "component": "Logo Box", "key": "originX", "value": 1580},
  {"op": "set", "component": "Logo Box", "key": "originY", "value": 860},
  {"op": "add", "path": "$COMPONENTS/LowerThird.qtz", "title": "Lower Third",
   "inputs": {"CIName": "Ada Lovelace", "CITitle": "Analyst, Engine Department"}},
  {"op": "set", "component": "Lower Third", "key": "originY", "value": 160},
  {"op": "animate", "component": "Lower Third", "key": "originX", "on": true},
  {"op": "keyframe", "component": "Lower Third", "key": "originX", "time": 0, "value": -1250},
  {"op": "keyframe", "component": "Lower Third", "key": "originX", "time": 1, "value": 120},
  {"op": "keyframe", "component": "Lower Third", "key": "originX", "time": 6, "value": 120},
  {"op": "keyframe", "component": "Lower Third", "key": "originX", "time": 7, "value": -1250},
  {"op": "permission", "component": "Lower Third", "key": "CIName", "allowed": true},
  {"op": "add", "path": "$COMPONENTS/Clock.qtz", "title": "Clock"},
  {"op": "set", "component": "Clock", "key": "originX", "value": 80},
  {"op": "set", "component": "Clock", "key": "originY", "value": 900},
  {"op": "animate", "component": "Clock", "key": "opacity", "on": true},
  {"op": "keyframe", "component": "Clock", "key": "opacity", "time": 0, "value": 0},
  {"op": "keyframe", "component": "Clock", "key": "opacity", "time": 1.5, "value": 1},
  {"op": "add", "path": "$COMPONENTS/Ticker.qtz", "title": "Ticker"},
  {"op": "set", "component": "Ticker", "key": "originX", "value": 0},
  {"op": "set", "component": "Ticker", "key": "originY", "value": 40},
  {"op": "component", "component": "Ticker", "start": 2, "end": 12},
  {"op": "stopFrame", "time": 3, "name": "In"},
  {"op": "stopFrame", "time": 8, "name": "Out"},
  {"op": "time", "t": 3}
]
JSON
"$CLI" doc apply "$DEMO" "$EDITS"
echo "wrote $DEMO"
