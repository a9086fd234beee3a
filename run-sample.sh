#!/usr/bin/env bash
# Builds TQNRALM and the tqnralm host, writes the sample store (a small Wine
# prefix with an AL-Mail32 installation) and prints its whole tree.
set -euo pipefail
cd "$(dirname "$0")"
scripts/install-deps.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo
cmake --build build -j"$(nproc)" --target tqnralm TQNRALM sNqxMsgNet samplestore
build/bin/samplestore build/sample-prefix >/dev/null
WINEPREFIX="$PWD/build/sample-prefix" build/bin/tqnralm --log build/sample-trace.log tree
