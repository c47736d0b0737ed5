# Audio and video: Wendrel against the programs people would otherwise run, on the same files
# with the same parallelism (one process per file, $(nproc) at a time, for the per-file tools;
# the files given to Wendrel at once run side by side). Inputs derived from the corpus: a
# 5-minute WAV and MP3 (the 3:15 piece looped), and the 1080p 30-second clip re-encoded to
# MPEG-2 video with PCM sound in Matroska: neither goes into an MP4 as it is (MPEG-4 Visual
# would, and be copied), so both sides re-encode everything. A row whose entry this build
# doesn't have is left out with a note. Movies to GIF are measured in gif.sh.
# Video rows are slow on few cores: they run BENCH_MEDIA_VIDEO_RUNS times (default 1).

# What our "maximum" video quality encodes with (media/video/VideoChoices.cpp, VideoEncodePipe.cpp):
# x264 at constant quality 18 with the "fast" preset, AAC at the default 256 kbit/s.
# AAC from 128 kbit/s up with the encoder's fast coefficient search (media/audio/
# AudioFormatChoice.cpp); the ffmpeg rows say the same, and one row shows its default search.
x264_preset=fast
x264_crf=18
aac_bitrate=256k

media=$(mktemp -d "${TMPDIR:-/tmp}/wendrel-bench-media-XXXXXX")
jobs=$(nproc)
export XDG_CONFIG_HOME="$media/config"   # Wendrel's default settings: maximum video quality, 256 kbit/s audio
media_entries=$("$WENDREL" ops --all 2>/dev/null | awk '{print $1}')

ffmpeg -v error -nostdin -stream_loop 1 -i "$CORPUS/audio/music_3m15.wav" -t 300 -c copy "$media/music_5m.wav"
ffmpeg -v error -nostdin -stream_loop 1 -i "$CORPUS/audio/music_3m15.mp3" -t 300 -c copy "$media/music_5m.mp3"
clip="$CORPUS/video/testsrc_1080p_30s.mp4"
ffmpeg -v error -nostdin -i "$clip" -c:v mpeg2video -q:v 3 -c:a pcm_s16le "$media/clip_1080p.mkv"

have_entry() {
    grep -qx "$1" <<<"$media_entries" && return 0
    echo; echo "(media: this build has no $1 entry yet: its rows are left out)"
    return 1
}

# media_task TITLE ENTRY FILES [NAME COMMAND]...: FILES a space-separated list; in each COMMAND,
# $f is a file, $b its base name without extension and $e its extension.
media_task() {
    local title=$1 entry=$2 files=$3; shift 3
    have_entry "$entry" || return 0
    bench_group "$title"
    bench_case "wendrel run $entry" bash -c '"$WENDREL" run '"$entry"' --to "$OUT" $0' "$files"
    while (($#)); do
        bench_case "$1, xargs -P$jobs" \
            bash -c 'printf "%s\n" $0 | xargs -P"$1" -I{} bash -c "$2" file {}' "$files" "$jobs" \
            'f=$1; n=$(basename "$f"); b=${n%.*}; e=${n##*.}; '"$2"
        shift 2
    done
    bench_end
}

# Peak normalisation to -1 dBFS. WAV stays WAV, MP3 becomes AAC in M4A, as Wendrel writes them.
# ffmpeg measures the peak in a first pass (volumedetect) and applies the gain in a second.
to_same_kind='if [[ $e == wav ]]; then out="$OUT/$b.wav"; enc=(-c:a pcm_s16le); else out="$OUT/$b.m4a"; enc=(-c:a aac -aac_coder fast -b:a '"$aac_bitrate"'); fi; '
media_task "Audio: normalise a 5-minute WAV and MP3 to -1 dBFS peak" audio.normalize \
    "$media/music_5m.wav $media/music_5m.mp3" \
    "sox --norm=-1" "$to_same_kind"'ffmpeg -v error -nostdin -i "$f" -f wav - | sox -q -t wav - -t wav - --norm=-1 | ffmpeg -v error -nostdin -i - "${enc[@]}" "$out"' \
    "ffmpeg volumedetect + volume" "$to_same_kind"'peak=$(ffmpeg -nostdin -i "$f" -af volumedetect -f null - 2>&1 | sed -n "s/.*max_volume: \(.*\) dB/\1/p"); ffmpeg -v error -nostdin -i "$f" -af "volume=$(echo "-1 - ($peak)" | bc -l)dB" "${enc[@]}" "$out"'

media_task "Audio: MP3 to M4A (AAC $aac_bitrate), 5-minute music and speech" media.m4a \
    "$media/music_5m.mp3 $CORPUS/audio/speech.mp3" \
    "ffmpeg -c:a aac -aac_coder fast" 'ffmpeg -v error -nostdin -i "$f" -vn -c:a aac -aac_coder fast -b:a '"$aac_bitrate"' "$OUT/$b.m4a"' \
    "ffmpeg -c:a aac (its default search)" 'ffmpeg -v error -nostdin -i "$f" -vn -c:a aac -b:a '"$aac_bitrate"' "$OUT/$b.m4a"'

media_task "Audio: WAV to FLAC, 5-minute music and speech" media.flac \
    "$media/music_5m.wav $CORPUS/audio/speech.wav" \
    "ffmpeg -c:a flac" 'ffmpeg -v error -nostdin -i "$f" -c:a flac "$OUT/$b.flac"'

video_runs=${BENCH_MEDIA_VIDEO_RUNS:-1}
saved_runs=$BENCH_RUNS; BENCH_RUNS=$video_runs
media_task "Video: 1080p 30 s MPEG-2 MKV to MP4 (x264 crf $x264_crf, $x264_preset)" media.mp4 \
    "$media/clip_1080p.mkv" \
    "ffmpeg libx264" 'ffmpeg -v error -nostdin -i "$f" -c:v libx264 -preset '"$x264_preset"' -crf '"$x264_crf"' -pix_fmt yuv420p -c:a aac -aac_coder fast -b:a '"$aac_bitrate"' -movflags +faststart "$OUT/$b.mp4"'

BENCH_RUNS=$saved_runs

# Compression to a size: how close the result lands and how many encodings it took.
if have_entry video.compress; then
    echo
    echo "## Video: 1080p 30 s clip compressed to 5 MB"
    target_option=$("$WENDREL" help video.compress 2>/dev/null | grep -o -- '--target[a-z-]*' | head -n 1)
    mkdir "$media/compressed"
    start=$(date +%s.%N)
    "$WENDREL" run video.compress ${target_option:+"$target_option" 5} -v --to "$media/compressed" "$clip" \
        2>"$media/compress.log" >/dev/null || { echo "(video.compress failed:)"; tail -n 5 "$media/compress.log"; }
    seconds=$(echo "$(date +%s.%N) - $start" | bc -l)
    result=$(find "$media/compressed" -type f | head -n 1)
    if [[ -n $result ]]; then
        printf '%-40s %10.2f s   %.2f MB (target 5.00 MB)   %d attempts\n' "wendrel run video.compress" "$seconds" \
            "$(echo "$(stat -c %s "$result") / 1000000" | bc -l)" "$(grep -c 'video attempt [0-9]*:' "$media/compress.log")"
    fi
fi

rm -rf "$media"
