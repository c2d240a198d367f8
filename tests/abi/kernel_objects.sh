#!/usr/bin/env bash
# The library's objects as the instruction sets split them: objects other than
# *_avx2/_avx512/_neon may hold no instruction of those extensions, and those
# objects may define no weak functions (an inline function compiled out of
# line), which the linker could pick for a caller built for the plain level.
# Usage: kernel_objects.sh <objdump> <nm> <object files...>
set -uo pipefail
objdump=$1
nm=$2
shift 2
status=0
for object in "$@"; do
  case "$object" in
  *_avx2.cpp.o | *_avx512.cpp.o | *_avx512vbmi.cpp.o | *_neon.cpp.o | *_armv8.cpp.o)
    weak=$("$nm" -C "$object" | grep -E '^[0-9a-f]* +W ')
    if [ -n "$weak" ]; then
      echo "$object defines weak functions:"
      echo "$weak"
      status=1
    fi
    ;;
  *)
    # x86: any register wider than 128 bits, or a VEX/EVEX-encoded
    # instruction. 32-bit ARM: NEON quad registers or element types, which
    # plain VFP code never uses.
    wide=$("$objdump" -d --no-show-raw-insn "$object" |
      grep -E '%[yz]mm[0-9]|%k[0-7]|	v[a-z0-9]+ .*%xmm|	v[a-z0-9.]+	.*\bq[0-9]+\b|	v[a-z0-9]+\.[iu](8|16|32|64)	|	vld[1-4]\.|	vst[1-4]\.' | head -5)
    if [ -n "$wide" ]; then
      echo "$object holds wider instructions:"
      echo "$wide"
      status=1
    fi
    ;;
  esac
done
[ "$status" -eq 0 ] && echo "$# objects checked"
exit "$status"
