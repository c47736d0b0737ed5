# Subtitles: 20 long SRT files (2,000 cues each, made from the corpus sample) to WebVTT,
# Wendrel in one job against FFmpeg file by file.

subs=$(mktemp -d "${TMPDIR:-/tmp}/wendrel-bench-subs-XXXXXX")
python3 - "$CORPUS/subs/sample.srt" "$subs" <<'PY'
import re, sys
source, folder = sys.argv[1], sys.argv[2]
blocks = [b for b in open(source, encoding="utf-8-sig").read().replace("\r\n", "\n").split("\n\n") if "-->" in b]
def seconds(t):
    h, m, s = t.replace(",", ".").split(":")
    return int(h) * 3600 + int(m) * 60 + float(s)
def stamp(x):
    ms = round(x * 1000)
    return "%02d:%02d:%02d,%03d" % (ms // 3600000, ms // 60000 % 60, ms // 1000 % 60, ms % 1000)
out, offset, number = [], 0.0, 1
while number <= 2000:
    for block in blocks:
        lines = block.split("\n")
        arrow = next(i for i, l in enumerate(lines) if "-->" in l)
        start, end = (seconds(p.strip()) for p in lines[arrow].split("-->"))
        out.append("%d\n%s --> %s\n%s" % (number, stamp(start + offset), stamp(end + offset), "\n".join(lines[arrow + 1:])))
        number += 1
    offset += 600
text = "\n\n".join(out[:2000]) + "\n"
for i in range(20):
    open("%s/episode%02d.srt" % (folder, i), "w", encoding="utf-8").write(text)
PY

bench_group "Subtitles: 20 SRT files of 2,000 cues to WebVTT"
bench_case "wendrel run subtitle.vtt" bash -c '"$WENDREL" run subtitle.vtt --to "$OUT" "$0"/*.srt' "$subs"
bench_case "ffmpeg, file by file" bash -c 'for f in "$0"/*.srt; do ffmpeg -v error -i "$f" "$OUT/$(basename "${f%.srt}").vtt"; done' "$subs"
bench_end
rm -rf "$subs"
