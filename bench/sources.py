"""The videos that the benchmarks measure, made by ffmpeg once and kept.

Only a few seconds of each are encoded; the rest of its length is those seconds again, copied as
they are, so that an hour of video is made in seconds.
"""

import os
import shutil
import subprocess
from dataclasses import dataclass


@dataclass(frozen=True)
class Source:
    name: str
    file: str  # its extension names the container
    size: str
    seconds: int
    unit: float  # seconds that are encoded, a whole number of groups of pictures
    encoder: tuple[str, ...]
    noise: int = 8  # detail that no encoder can leave out


# No group lasts whole seconds, where the planned instants are: a plain pass must decode as much
# of one as it does in videos of the wild.
def h264(group: int, rate: str) -> tuple[str, ...]:
    return ("libx264", "-preset", "veryfast", "-g", str(group), "-keyint_min", str(group),
            "-sc_threshold", "0", "-b:v", rate)


HOUR = Source("1 h 1080p H.264, 10 s groups", "hour-10s.mp4", "1920x1080", 3600, 20.08,
              h264(251, "5M"))
FIVE_HOURS = Source("5 h 720p H.264 mkv", "five-hours.mkv", "1280x720", 18000, 20.08,
                    h264(251, "400k"))
TEN_MINUTES = Source("10 min of the same", "ten-minutes.mkv", "1280x720", 600, 20.08,
                     FIVE_HOURS.encoder)
FULL = (
    HOUR,
    Source("1 h 1080p H.264, 1 s groups", "hour-1s.mp4", "1920x1080", 3600, 20.8,
           h264(26, "2M")),
    Source("15 min 4K HEVC, 5 s groups", "4k.mkv", "3840x2160", 900, 5.04,
           ("libx265", "-preset", "ultrafast", "-g", "126", "-x265-params", "log-level=error",
            "-b:v", "4M")),
    Source("10 min 576p MPEG-2 ts", "mpeg2.ts", "720x576", 600, 20,
           ("mpeg2video", "-g", "12", "-bf", "2", "-b:v", "4M")),
    Source("10 min 1080p VP9 webm, 5 s groups", "vp9.webm", "1920x1080", 600, 10.08,
           ("libvpx-vp9", "-deadline", "realtime", "-cpu-used", "8", "-row-mt", "1", "-g", "126",
            "-b:v", "2M")),
    Source("10 min 1080p AV1, 5 s groups", "av1.mp4", "1920x1080", 600, 10.08,
           ("libsvtav1", "-preset", "12", "-g", "126", "-b:v", "2M")),
    Source("2 min 1080p ProRes", "prores.mov", "1920x1080", 120, 20,
           ("prores", "-profile:v", "0"), noise=0),
    Source("2 min 720p Motion-JPEG avi", "mjpeg.avi", "1280x720", 120, 20, ("mjpeg", "-q:v", "8")),
    FIVE_HOURS,
    TEN_MINUTES,
)
QUICK = (
    Source("20 s H.264, 10 s groups", "long-groups.mp4", "640x360", 20, 10.04, h264(251, "500k")),
    Source("20 s MPEG-2 ts", "mpeg2.ts", "720x576", 20, 10,
           ("mpeg2video", "-g", "12", "-bf", "2", "-b:v", "2M")),
    Source("20 s Motion-JPEG avi", "mjpeg.avi", "640x360", 20, 10, ("mjpeg", "-q:v", "8")),
)
CLIP = Source("10 s 720p H.264, 1 s groups", "clip.mp4", "1280x720", 10, 10.4, h264(26, "1M"))


def _ffmpeg(*arguments: str) -> None:
    subprocess.run(("ffmpeg", "-nostdin", "-loglevel", "error", "-y", *arguments), check=True,
                   env={**os.environ, "SVT_LOG": "1"})


def make(source: Source, folder: str) -> str:
    """The path of a source, which is made unless it is there already."""
    path = os.path.join(folder, source.file)
    if os.path.exists(path):
        return path
    print(f"making {source.file} …", flush=True)
    unit = os.path.join(folder, "unit-" + source.file)
    whole = os.path.join(folder, "new-" + source.file)
    codec, *options = source.encoder
    picture = f"testsrc2=s={source.size}:r=25:d={source.unit},noise=alls={source.noise}:allf=t"
    pixels = "yuv422p10" if codec == "prores" else "yuvj420p" if codec == "mjpeg" else "yuv420p"
    _ffmpeg("-f", "lavfi", "-i", picture, "-pix_fmt", pixels, "-c:v", codec, *options, unit)
    repeats = round(source.seconds / source.unit) - 1
    _ffmpeg("-stream_loop", str(repeats), "-i", unit, "-c", "copy", whole)
    os.remove(unit)
    os.rename(whole, path)  # one that was interrupted is made again
    return path


def make_clips(count: int, folder: str) -> str:
    """A folder of short clips, each a file of its own."""
    clips = os.path.join(folder, f"clips-{count}")
    os.makedirs(clips, exist_ok=True)
    first = make(CLIP, folder)
    for number in range(count):
        path = os.path.join(clips, f"clip {number:03}.mp4")
        if not os.path.exists(path):
            shutil.copyfile(first, path)
    return clips
