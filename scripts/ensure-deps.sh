#!/usr/bin/env bash
# Runs the dependency bootstrap as root, through sudo when needed. Sourced by the build scripts.
if [ "$(id -u)" = 0 ]; then
  bash "$(dirname "${BASH_SOURCE[0]}")/bootstrap-deps.sh"
else
  sudo bash "$(dirname "${BASH_SOURCE[0]}")/bootstrap-deps.sh"
fi
