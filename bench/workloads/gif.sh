# Movie to animated GIF: the 1080p 30-second test clip at 15 frames a second, 640 pixels wide,
# against the ffmpeg program doing the same two passes (palette of the clip, then dithered onto
# it with the same filter options). Both should write the same bytes.

gif_source="$CORPUS/video/testsrc_1080p_30s.mp4"
bench_group "Movie → GIF: testsrc_1080p_30s.mp4, 15 fps, 640 px"
bench_case "wendrel run video.gif" bash -c '"$WENDREL" run video.gif --to "$OUT" "$0"' "$gif_source"
bench_case "ffmpeg palettegen + paletteuse" bash -c '
    ffmpeg -v error -t 30 -i "$0" -vf fps=15,scale=640:-1:flags=lanczos,palettegen=stats_mode=full "$OUT/p.png" &&
    ffmpeg -v error -t 30 -i "$0" -i "$OUT/p.png" \
        -lavfi "fps=15,scale=640:-1:flags=lanczos[x];[x][1:v]paletteuse=dither=floyd_steinberg:diff_mode=rectangle" \
        "$OUT/clip.gif" && rm "$OUT/p.png"' "$gif_source"
bench_end
