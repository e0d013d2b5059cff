#!/usr/bin/env python3
"""make-hostile.py FOLDER: writes files that look like videos and mean harm.

FOLDER/lists   lists of other files, under the extensions of videos; each names FOLDER/private.mp4
FOLDER/tables  videos whose tables state many more pictures than there are, for each of which
               ffmpeg sets up 24 bytes at every opening, or pictures of 16,000 pixels square
Needs ffmpeg. Nothing is written outside of FOLDER.
"""
import pathlib
import subprocess
import sys

HLS = "#EXTM3U\n#EXT-X-TARGETDURATION:10\n#EXTINF:3,\n{target}\n"
DASH = """<?xml version="1.0"?>
<MPD xmlns="urn:mpeg:dash:schema:mpd:2011" type="static" mediaPresentationDuration="PT3S"
 profiles="urn:mpeg:dash:profile:isoff-on-demand:2011"><Period><AdaptationSet mimeType="video/mp4">
<Representation id="0" bandwidth="1000" width="320" height="240"><BaseURL>{target}</BaseURL>
<SegmentBase indexRange="0-1"/></Representation></AdaptationSet></Period></MPD>
"""
VOBSUB = "# VobSub index file, v7 (do not modify this line!)\nsize: 720x576\nid: en, index: 0\n"

LISTS = {
    "playlist.mp4": HLS + "#EXT-X-ENDLIST\n",
    "playlist.ts": HLS + "#EXT-X-ENDLIST\n",
    "live.mp4": HLS,
    "manifest.mp4": DASH,
    "script.mp4": "ffconcat version 1.0\nfile 'private.mp4'\n",
    "itself.mkv": "ffconcat version 1.0\nfile 'itself.mkv'\n",
    "subtitles.vob": VOBSUB,
    "session.mp4": "v=0\no=- 0 0 IN IP4 127.0.0.1\ns=x\nc=IN IP4 127.0.0.1\nt=0 0\n"
                   "m=video 5004 RTP/AVP 96\na=rtpmap:96 H264/90000\n",
}
PICTURES = {"five-million.mov": 5_000_000, "fifty-million.mov": 50_000_000}


def clip(path, *options):
    subprocess.run(
        ["ffmpeg", "-nostdin", "-loglevel", "error", "-y", "-f", "lavfi", "-i",
         "testsrc2=s=320x240:r=25", "-t", "6", *options, str(path)],
        check=True)
    return path.read_bytes()


def patched(video, box, offset, number):
    """The video with a number of four bytes in the first box of that name."""
    place = video.index(box) + 4 + offset
    return video[:place] + number.to_bytes(4, "big") + video[place + 4:]


def with_pictures(video, count):
    """An uncompressed video with tables of count pictures of one size in its first chunk."""
    video = patched(video, b"stsz", 8, count)
    return patched(video, b"stsc", 12, count)


def with_large_pictures(video, side):
    """A video of PNG pictures, each of which states that it is that wide and high."""
    return video.replace(b"IHDR" + (32).to_bytes(4, "big") + (24).to_bytes(4, "big"),
                         b"IHDR" + side.to_bytes(4, "big") * 2)


def main():
    folder = pathlib.Path(sys.argv[1])
    lists, tables = folder / "lists", folder / "tables"
    for each in (lists, tables):
        each.mkdir(parents=True, exist_ok=True)
    private = folder / "private.mp4"
    clip(private, "-c:v", "libx264", "-preset", "fast")
    # The scripts reach only what lies beside them.
    (lists / "private.mp4").write_bytes(private.read_bytes())
    (lists / "subtitles.sub").write_bytes(private.read_bytes())
    for name, text in LISTS.items():
        (lists / name).write_text(text.format(target=private.resolve()))
    small = ["-vf", "scale=32:24", "-r", "10", "-pix_fmt", "rgb24"]
    large = with_large_pictures(clip(tables / "large.mov", *small, "-c:v", "png"), 16000)
    (tables / "large.mov").write_bytes(large)
    plain = clip(tables / "plain.mov", *small, "-c:v", "rawvideo")
    for name, count in PICTURES.items():
        (tables / name).write_bytes(with_pictures(plain, count))


if len(sys.argv) != 2:
    sys.exit(__doc__)
main()
