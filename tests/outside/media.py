"""Makes and fetches the media that the outside tests work on."""

import os
import shutil
import struct
import subprocess
import sys
from pathlib import Path

from atoms import Atom, MovieFile, be32, edit_list, set_bytes

REAL = {  # Debian package: files that it holds
    'node-opencv': ['motion.mov'],
    'gem-doc': ['anim-1.mov'],
    'psychtoolbox-3-common': ['DualDiscs.mov'],
    'libjs-dojo-dojox': ['version.mov'],
    'forensics-samples-files': ['VID_20191220_170832.mp4', 'IMG_20191224_234846.jpg',
                                'IMG_20200124_231153.jpg', 'empty.jpg', 'd-debian.jpg'],
    'golang-github-rwcarlsen-goexif-dev': ['sample1.jpg', 'huge_tag_exif.jpg',
                                           'infinite_loop_exif.jpg', 'max_uint32_exif.jpg'],
}


def run(*command, **options):
    """Runs a command that has to succeed; gives back what it printed."""
    done = subprocess.run([str(c) for c in command], capture_output=True, text=True, **options)
    if done.returncode:
        raise RuntimeError(f'{command} gave {done.returncode}:\n{done.stdout}\n{done.stderr}')
    return done.stdout


def ffmpeg(*arguments):
    run('ffmpeg', '-v', 'error', '-nostdin', '-y', *arguments)


def fetch_real(cache):
    """Downloads and unpacks the packages once; gives back the files by name."""
    cache = Path(cache)
    for package, names in REAL.items():
        folder = cache / package
        if not folder.exists():
            work = cache / (package + '.work')
            shutil.rmtree(work, ignore_errors=True)
            work.mkdir(parents=True)
            run('apt-get', 'download', package, cwd=work)
            run('dpkg-deb', '-x', next(work.glob('*.deb')), work / 'root')
            kept = cache / (package + '.kept')
            shutil.rmtree(kept, ignore_errors=True)
            kept.mkdir()
            for name in names:
                shutil.copy(next((work / 'root').rglob(name)), kept / name)
            shutil.rmtree(work)
            kept.rename(folder)
    return {name: cache / package / name for package, names in REAL.items() for name in names}


def make_mask(path, width=96, height=64):
    """A mask with a clear, a half clear and an opaque stripe."""
    ffmpeg('-f', 'lavfi', '-i', f'color=c=red:s={width}x{height},format=rgba,'
           "geq=r=255:g=0:b=0:a='if(lt(X,W/3),0,if(lt(X,2*W/3),128,255))'", '-frames:v', '1', path)


VIDEO = ['-f', 'lavfi', '-i', 'testsrc=size=320x240:rate=25:duration=2']
TONE = ['-f', 'lavfi', '-i', 'sine=frequency=440:sample_rate=44100:duration=2']


def make_movies(folder):
    """Writes a movie of every shape into `folder`; gives back the paths."""
    folder = Path(folder)
    make_with_ffmpeg(folder)
    make_with_patches(folder)
    return sorted(folder.glob('*.m??'))


def make_with_ffmpeg(folder):
    x264 = ['-c:v', 'libx264', '-preset', 'ultrafast', '-pix_fmt', 'yuv420p']
    ffmpeg(*VIDEO, *TONE, *x264, '-c:a', 'pcm_s16be', folder / 'pcm.mov')
    ffmpeg(*VIDEO, *TONE, *x264, '-bf', '2', '-c:a', 'aac', '-movflags', '+faststart', folder / 'faststart.mp4')
    ffmpeg(*VIDEO, *TONE, *x264, '-g', '10', '-c:a', 'aac',
           '-movflags', '+frag_keyframe+empty_moov', folder / 'fragmented.mp4')
    ffmpeg(*VIDEO, *TONE, *x264, '-g', '10', '-c:a', 'aac', '-movflags',
           '+frag_keyframe+default_base_moof', folder / 'fragmented-base-moof.mp4')
    ffmpeg(*VIDEO, '-c:v', 'mpeg4', '-timecode', '01:00:00:00', folder / 'timecode.mov')
    chapters = folder / 'chapters.txt'
    chapters.write_text(';FFMETADATA1\ntitle=A title\n' + ''.join(
        f'[CHAPTER]\nTIMEBASE=1/1000\nSTART={i * 500}\nEND={i * 500 + 500}\ntitle=Chapter {i}\n' for i in range(4)))
    ffmpeg(*VIDEO, *TONE, '-i', chapters, '-map_metadata', '2', '-map', '0', '-map', '1', '-c:v', 'mpeg4',
           '-c:a', 'aac', folder / 'chapters.mov')
    chapters.unlink()
    ffmpeg(*VIDEO, *TONE, *TONE, *TONE, '-map', '0', '-map', '1', '-map', '2', '-map', '3', '-c:v', 'mjpeg',
           '-c:a:0', 'adpcm_ima_qt', '-c:a:1', 'pcm_s24le', '-c:a:2', 'pcm_alaw', folder / 'old-sound.mov')
    ffmpeg(*VIDEO, '-c:v', 'prores_ks', '-pix_fmt', 'yuv422p10le', '-color_primaries', 'bt709', '-colorspace',
           'bt709', '-color_trc', 'bt709', '-aspect', '16:9', folder / 'prores.mov')
    ffmpeg(*VIDEO, '-c:v', 'mpeg4', '-metadata:s:v', 'rotate=90', folder / 'rotated.mov')
    ffmpeg(*TONE, '-c:a', 'pcm_s16le', folder / 'sound-only.mov')
    ffmpeg(*VIDEO, '-c:v', 'qtrle', folder / 'a.b.mov')


def make_variants(folder):
    """Movies of other rates, codecs and file kinds than those of make_movies; gives back the paths."""
    folder = Path(folder)

    def video(rate, size='64x48', duration=1):
        return ['-f', 'lavfi', '-i', f'testsrc=size={size}:rate={rate}:duration={duration}']
    x264 = ['-c:v', 'libx264', '-preset', 'ultrafast', '-pix_fmt', 'yuv420p', '-bf', '3']
    ffmpeg(*video('30000/1001'), *TONE, *x264, '-c:a', 'aac', folder / 'ntsc.mp4')
    ffmpeg(*video('24000/1001'), *x264, '-movie_timescale', '600', folder / 'film.mov')
    ffmpeg(*video('60000/1001'), '-c:v', 'mjpeg', folder / 'fast.mov')
    ffmpeg(*video('15'), '-vf', "select='not(eq(mod(n,5),3))'", '-fps_mode', 'vfr', *x264, folder / 'uneven.mp4')
    ffmpeg(*video('25'), '-c:v', 'libx265', '-x265-params', 'log-level=none', '-tag:v', 'hvc1', folder / 'hevc.mp4')
    ffmpeg(*video('25', '720x576'), '-c:v', 'dvvideo', '-pix_fmt', 'yuv420p', folder / 'dv-pal.mov')
    ffmpeg(*video('30000/1001', '720x480'), '-c:v', 'dvvideo', '-pix_fmt', 'yuv411p', folder / 'dv-ntsc.mov')
    ffmpeg(*video('25'), '-c:v', 'v210', folder / 'ten-bit.mov')
    ffmpeg(*video('25'), '-c:v', 'png', folder / 'png.mov')
    ffmpeg(*video('25'), '-c:v', 'rawvideo', '-pix_fmt', 'uyvy422', folder / 'raw.mov')
    ffmpeg(*video('25'), '-c:v', 'mpeg4', '-vf', 'setsar=16/15', folder / 'wide-pixels.mp4')
    ffmpeg(*TONE, '-c:a', 'aac', folder / 'sound.m4a')
    ffmpeg(*TONE, '-c:a', 'alac', folder / 'lossless.m4a')
    ffmpeg(*TONE, '-c:a', 'pcm_f32le', '-ac', '2', folder / 'float.mov')
    ffmpeg(*video('10'), '-c:v', 'h263', '-s', '176x144', folder / 'phone.3gp')
    ffmpeg('-itsoffset', '0.5', *video('25'), *TONE, *x264, '-c:a', 'aac', folder / 'late.mov')
    ffmpeg('-ss', '0.3', *video('25', duration=2), *x264, '-g', '30', '-c:v', 'mpeg4', folder / 'cut.mov')
    ffmpeg(*video('25'), *TONE, *x264, '-c:a', 'aac', '-movflags', '+frag_keyframe+separate_moof', '-g', '5',
           folder / 'pieces.mp4')
    return sorted(folder.glob('*.*'))


def make_with_patches(folder):
    base = folder / 'pcm.mov'

    def patched(name, change=lambda movie: None, **how):
        movie = MovieFile(base)
        change(movie)
        movie.write(folder / name, **how)

    patched('compressed.mov', compressed=True)
    patched('wide-mdat.mov', wide_size=True)
    patched('moov-first.mov', moov_first=True)
    middle = MovieFile(base).chunk_offsets(MovieFile(base).traks()[0])[1]
    patched('two-mdat.mov', split_at=middle)
    patched('disabled.mov', lambda m: set_bytes(m.traks()[1].first(b'tkhd'), 0, be32(0x0E)))

    def layers(movie):
        set_bytes(movie.traks()[0].first(b'tkhd'), 32, struct.pack('>h', -7))
        set_bytes(movie.traks()[0].first(b'mdia', b'minf', b'vmhd'), 4, struct.pack('>H', 0x40))
    patched('layers.mov', layers)

    def edits(movie):
        trak = movie.traks()[0]
        trak.children = [c for c in trak.children if c.kind != b'edts']
        trak.children.insert(1, edit_list([(200, -1, 0x10000), (500, 0, 0x10000), (300, 10240, 0x20000),
                                           (1000, 5120, 0x8000)]))
    patched('edits.mov', edits)

    def behind(movie):
        trak = movie.traks()[0]
        edts = [c for c in trak.children if c.kind == b'edts']
        trak.children = [c for c in trak.children if c.kind != b'edts'] + edts
    patched('edits-behind.mov', behind)

    def unknown(movie):
        trak = movie.traks()[0]
        trak.children.insert(1, Atom(b'load', be32(1) * 4))
        trak.children.append(Atom(b'zZ01', b'kept as it is'))
        movie.moov.children.append(Atom(b'udta', Atom(b'WLOC', be32(0x00200030)).bytes() + be32(0)))
        movie.moov.children.append(Atom(b'zZ02', bytes(range(256))))
    patched('unknown.mov', unknown)

    def self_url(movie):
        for trak in movie.traks():
            dref = trak.first(b'mdia', b'minf', b'dinf', b'dref')
            dref.data = be32(0) + be32(1) + Atom(b'url ', be32(1)).bytes()
    patched('self-url.mov', self_url)

    beside = folder / 'media'
    beside.mkdir(exist_ok=True)
    shutil.copy(base, beside / 'essence.bin')

    def external(movie):
        for trak in movie.traks():
            dref = trak.first(b'mdia', b'minf', b'dinf', b'dref')
            dref.data = be32(0) + be32(1) + Atom(b'url ', be32(0) + b'media/essence.bin\0').bytes()
    movie = MovieFile(base)
    external(movie)
    (folder / 'external.mov').write_bytes(
        Atom(b'ftyp', b'qt  \0\0\x02\0qt  ').bytes() + movie.moov.bytes())


def make_stills(folder):
    """JPEGs of every ordinary kind."""
    folder = Path(folder)
    run('convert', '-size', '322x241', 'plasma:fractal', '-seed', '1', folder / 'base.png')
    kinds = {
        'baseline.jpg': ['-sampling-factor', '2x2'], 'full.jpg': ['-sampling-factor', '1x1'],
        'progressive.jpg': ['-interlace', 'Plane'], 'grey.jpg': ['-colorspace', 'Gray'],
        'cmyk.jpg': ['-colorspace', 'CMYK'], 'half.jpg': ['-sampling-factor', '2x1'],
        'dense.jpg': ['-density', '240x120', '-units', 'PixelsPerInch'],
    }
    for name, options in kinds.items():
        run('convert', folder / 'base.png', *options, '-quality', '92', folder / name)
    for orientation in range(1, 9):
        target = folder / f'turned{orientation}.jpg'
        run('convert', folder / 'base.png', '-quality', '92', target)
        run('exiftool', '-q', '-overwrite_original', '-n', f'-Orientation={orientation}', target)
    run('convert', folder / 'base.png', '-density', '240x120', '-units', 'PixelsPerInch', folder / 'turned-dense.jpg')
    run('exiftool', '-q', '-overwrite_original', '-n', '-Orientation=6', folder / 'turned-dense.jpg')
    (folder / 'base.png').unlink()
    shutil.copy(folder / 'full.jpg', folder / 'photojpg')
    shutil.copy(folder / 'full.jpg', folder / 'NOT.JPG')
