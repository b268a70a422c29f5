#!/usr/bin/env bash
# End-to-end runs of orv-convert: the built-in pattern, a round trip through
# YUV4MPEG2, every output family, and malformed input refused with a message
# naming the frame and nothing left behind.
#   cli_test.sh path/to/orv-convert
set -u
tool=$(cd "$(dirname "$1")" && pwd)/$(basename "$1")
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
cd "$dir"
failures=0
fail() { echo "FAIL: $*"; failures=$((failures + 1)); }

# The pattern, interlaced YUY2 to progressive RGB32 with a contact sheet.
"$tool" -q -n 4 --pattern-size 320x180 -f rgb32 -s 160x120 --scan progressive \
  -o out.rgb --snapshot sheet.png || fail "pattern to rgb32"
[ "$(stat -c %s out.rgb)" -eq $((160 * 120 * 4 * 4)) ] || fail "rgb32 size"
[ "$(head -c 8 sheet.png | od -An -tx1 | tr -d ' \n')" = "89504e470d0a1a0a" ] || fail "png signature"

# To YUV4MPEG2 4:2:0 and back in through the reader, with a field order swap.
"$tool" -q -n 3 --pattern-size 64x48 --pattern-scan tff -f yuv420 --scan bff -o a.y4m \
  || fail "pattern to y4m"
head -1 a.y4m | grep -q '^YUV4MPEG2 W64 H48 F30000:1001 Ib A1:1 C420jpeg$' || fail "y4m header: $(head -1 a.y4m)"
[ "$(stat -c %s a.y4m)" -eq $(( $(head -1 a.y4m | wc -c) + 3 * (6 + 64 * 48 * 3 / 2) )) ] || fail "y4m size"
"$tool" -q -i a.y4m -f yuy2 -s 32x24 --aspect keep --dar 4:3 -o b.y4m || fail "y4m in"
head -1 b.y4m | grep -q '^YUV4MPEG2 W32 H24 F30000:1001 Ib A1:1 C422$' || fail "422 header: $(head -1 b.y4m)"
[ "$(grep -c FRAME b.y4m)" -ge 3 ] || fail "frame count"
cat a.y4m | "$tool" -q -i - -f rgb24 -o - > c.rgb || fail "stdin to stdout"
[ "$(stat -c %s c.rgb)" -eq $((64 * 48 * 3 * 3)) ] || fail "rgb24 size"
for mode in nearest linear cubic auto tavo vrscl-field vrscl-frame; do
  "$tool" -q -i a.y4m -f yv12 -s 48x36 --interpolation "$mode" -o "m-$mode.y4m" || fail "mode $mode"
done

# Malformed input: a message naming the frame, exit 1, no output file.
head -c $(( $(head -1 a.y4m | wc -c) + 6 + 64 * 48 * 3 / 2 + 6 + 1000 )) a.y4m > cut.y4m
"$tool" -q -i cut.y4m -o cut-out.y4m 2> err.txt && fail "truncated input accepted"
grep -q 'frame 1: truncated: 1000 of 4608 bytes' err.txt || fail "truncated message: $(cat err.txt)"
ls cut-out.y4m* >/dev/null 2>&1 && fail "half-written output left behind"
printf 'YUV4MPEG2 W64 C420jpeg\n' > nohdr.y4m
"$tool" -q -i nohdr.y4m -o x.y4m 2> err.txt && fail "header without height accepted"
grep -q 'header' err.txt || fail "header message: $(cat err.txt)"
{ head -1 a.y4m; printf 'FRAMX\n'; } > badframe.y4m
"$tool" -q -i badframe.y4m -o x.y4m 2> err.txt && fail "bad frame marker accepted"
grep -q 'frame 0: expected "FRAME"' err.txt || fail "marker message: $(cat err.txt)"
printf 'RIFF' > notyuv.y4m
"$tool" -q -i notyuv.y4m 2> err.txt && fail "non-y4m accepted"
ls x.y4m* >/dev/null 2>&1 && fail "output left behind"

# Bad arguments: exit 2.
"$tool" -s 0x10 2>/dev/null; [ $? -eq 2 ] || fail "bad size not refused with 2"
"$tool" -f nv12 2>/dev/null; [ $? -eq 2 ] || fail "bad format not refused with 2"
"$tool" --bogus 2>/dev/null; [ $? -eq 2 ] || fail "unknown option not refused with 2"
"$tool" --help | grep -q -- '--snapshot' || fail "help"

[ $failures -eq 0 ] && echo "all orv-convert runs passed"
exit $failures
