"""Runs the whole job on movies and stills of every shape and looks at the outputs with tools that are not ours.

Environment: QUILLMERE_BATCH the batch driver, QUILLMERE_CACHE a folder for downloads, kept between runs.
"""

import hashlib
import json
import os
import re
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

import media
from atoms import MovieFile, parse

DRIVER = os.environ['QUILLMERE_BATCH']
CACHE = Path(os.environ['QUILLMERE_CACHE'])
HERE = Path(__file__).parent


def digest(path):
    return hashlib.sha256(Path(path).read_bytes()).hexdigest()


def probe(path, *more):
    return json.loads(media.run('ffprobe', '-v', 'error', '-of', 'json', '-show_streams', '-show_format', *more, path))


def stream_digest(path, index):
    """The MD5 of one track's samples in media order; None for kinds that FFmpeg does not copy raw."""
    done = subprocess.run(['ffmpeg', '-v', 'error', '-nostdin', '-ignore_editlist', '1', '-i', str(path), '-map',
                           f'0:{index}', '-c', 'copy', '-f', 'md5', '-'], capture_output=True, text=True)
    return done.stdout.strip() if done.returncode == 0 else None


def packets(path, index):
    found = probe(path, '-show_packets', '-show_data_hash', 'md5', '-select_streams', str(index))['packets']
    return [(p.get('pts'), p.get('dts'), p.get('duration'), p['size'], p['data_hash']) for p in found]


def moov_of(path):
    return MovieFile(path).moov


class JobCase(unittest.TestCase):
    """A job on the files that `fill` makes; `fill` is each class's own."""

    @classmethod
    def fill(cls):
        raise unittest.SkipTest('made for the classes below')

    @classmethod
    def run_job(cls):
        return subprocess.run([DRIVER, cls.mask, cls.source, cls.target], capture_output=True, text=True, timeout=600)

    @classmethod
    def setUpClass(cls):
        cls.top = Path(tempfile.mkdtemp(prefix='quillmere-outside-'))
        cls.addClassCleanup(shutil.rmtree, cls.top, ignore_errors=True)
        cls.source, cls.target, cls.mask = cls.top / 'source', cls.top / 'target', cls.top / 'mask.png'
        cls.source.mkdir()
        cls.target.mkdir()
        media.make_mask(cls.mask)
        cls.fill()
        files = [p for p in cls.source.rglob('*') if p.is_file()]
        cls.before = {p: digest(p) for p in files}
        cls.job = cls.run_job()

    def test_sources_are_unchanged(self):
        self.assertEqual(self.before, {p: digest(p) for p in self.source.rglob('*') if p.is_file()})


class Movies(JobCase):
    @classmethod
    def fill(cls):
        media.make_movies(cls.source)
        for name, path in media.fetch_real(CACHE).items():
            if path.suffix in ('.mov', '.mp4'):
                shutil.copy(path, cls.source / name)

    def each(self, check):
        """Calls check(source, output) for every movie as a test of its own."""
        found = [p for p in sorted(self.source.iterdir()) if p.is_file()]
        self.assertGreater(len(found), 20)
        for path in found:
            output = self.target / (path.stem + '-clean.mov')
            with self.subTest(movie=path.name):
                self.assertTrue(output.exists(), f'no output; the job printed {self.job.stdout!r}')
                check(path, output)

    def test_the_job_ends_well_and_leaves_only_outputs(self):
        self.assertEqual((self.job.returncode, self.job.stdout, self.job.stderr), (0, '', ''))
        self.assertEqual(len(list(self.target.iterdir())), sum(p.is_file() for p in self.source.iterdir()))

    def test_every_track_plays_the_same_samples(self):
        def check(path, output):
            if path.name == 'external.mov':  # FFmpeg does not follow the reference
                path = self.source / 'pcm.mov'
            old, new = probe(path)['streams'], probe(output)['streams']
            self.assertEqual(len(new), len(old) + 1)
            for i, stream in enumerate(old):
                for key in ('codec_name', 'codec_tag_string', 'codec_type', 'width', 'height', 'time_base', 'duration_ts',
                            'nb_frames', 'sample_rate', 'disposition', 'side_data_list'):
                    if 'frag' not in path.name or key not in ('nb_frames', 'duration_ts'):
                        self.assertEqual(stream.get(key), new[i].get(key), key)
                self.assertEqual(stream_digest(path, i), stream_digest(output, i))
                if 'frag' in path.name:  # a gap in decode times becomes part of the sample before it
                    self.assertEqual([(p[0], p[1], *p[3:]) for p in packets(path, i)],
                                     [(p[0], p[1], *p[3:]) for p in packets(output, i)])
                elif 'edits' not in path.name:
                    self.assertEqual(packets(path, i), packets(output, i))

        self.each(check)

    def test_the_overlay_is_the_mask_byte_for_byte(self):
        md5 = 'MD5:' + hashlib.md5(self.mask.read_bytes()).hexdigest()
        def check(path, output):
            index = len(probe(output)['streams']) - 1
            found = probe(output, '-show_packets', '-show_data_hash', 'md5', '-select_streams', str(index))
            self.assertEqual([p['data_hash'] for p in found['packets']], [md5])

        self.each(check)

    def test_layers_and_graphics_modes(self):
        def check(path, output):
            tags = json.loads(media.run('exiftool', '-n', '-a', '-G1', '-json', '-TrackLayer', '-GraphicsMode',
                                        '-CompressorID', output))[0]
            traks = moov_of(output).find(b'trak')
            layers = [int.from_bytes(t.first(b'tkhd').data[32:34], 'big', signed=True) if t.first(b'tkhd').data[0] == 0
                      else int.from_bytes(t.first(b'tkhd').data[44:46], 'big', signed=True) for t in traks]
            self.assertEqual(min(layers), layers[-1])
            self.assertEqual(layers.count(layers[-1]), 1)
            overlay = f'Track{len(traks)}'
            self.assertEqual(tags[overlay + ':GraphicsMode'], 0x100)
            self.assertEqual(tags[overlay + ':CompressorID'].strip(), 'png')
            self.assertEqual(tags[overlay + ':TrackLayer'], layers[-1] & 0xFFFF)  # it shows layers unsigned

        self.each(check)

    def test_what_is_not_about_media_places_is_kept(self):
        def check(path, output):
            if 'frag' in path.name or path.name in ('compressed.mov',):
                return
            old, new = moov_of(path), moov_of(output)
            for before, after in zip(old.find(b'trak'), new.find(b'trak')):
                self.assertEqual([c.kind for c in before.children], [c.kind for c in after.children])
                for part in ((b'tkhd',), (b'edts', b'elst'), (b'tref',), (b'udta',), (b'load',), (b'tapt',), (b'zZ01',),
                             (b'mdia', b'mdhd'), (b'mdia', b'hdlr'), (b'mdia', b'minf', b'vmhd'),
                             (b'mdia', b'minf', b'gmhd', b'gmin'), (b'mdia', b'minf', b'stbl', b'stsd'),
                             (b'mdia', b'minf', b'stbl', b'stts'), (b'mdia', b'minf', b'stbl', b'stsz'),
                             (b'mdia', b'minf', b'stbl', b'ctts'), (b'mdia', b'minf', b'stbl', b'stsc')):
                    self.assertEqual([a.bytes() for a in before.find(*part)], [a.bytes() for a in after.find(*part)], part)
            for kind in (b'udta', b'meta', b'zZ02'):
                self.assertEqual([a.bytes() for a in old.find(kind)], [a.bytes() for a in new.find(kind)], kind)

        self.each(check)

    def test_mp4box_reads_self_contained_tracks(self):
        def check(path, output):
            tracks = json.loads(media.run('node', HERE / 'mp4box_probe.mjs', CACHE / 'npm', output))
            self.assertTrue(all(flags & 1 for t in tracks for flags in t['references']), tracks)
            self.assertEqual(tracks[-1]['graphicsMode'], 0x100)
            self.assertEqual(tracks[-1]['edits'], 1)
            self.assertEqual(tracks[-1]['flags'] & 1, 1)

        self.each(check)

    def test_mediainfo_and_fq_read_it(self):
        def check(path, output):
            xml = media.run('mediainfo', '--Details=1', '--Output=XML', output)
            self.assertNotIn('IsTruncated', xml)
            self.assertIn('png', xml)
            top = media.run('fq', '-o', 'force=true', '-d', 'mp4', '[.boxes[].type] | join(" ")', output)
            self.assertRegex(top, r'ftyp moov')

        self.each(check)

    def test_the_output_decodes_alone(self):
        alone = self.top / 'alone'
        def check(path, output):
            alone.mkdir()
            try:
                moved = Path(shutil.copy(output, alone))
                media.ffmpeg('-i', moved, '-map', '0:v', '-map', '0:a?', '-f', 'null', '-')
            finally:
                shutil.rmtree(alone)

        self.each(check)

    def test_blends_show_the_overlay(self):
        """FFmpeg overlays the two tracks: clear third as the base, opaque third red, half clear third between."""
        output = self.target / 'faststart-clean.mov'
        raw = subprocess.run(['ffmpeg', '-v', 'error', '-nostdin', '-i', output, '-filter_complex',
                              '[0:v:0]format=rgba[b];[b][0:v:1]overlay=format=rgb,format=rgb24', '-frames:v', '1', '-f', 'rawvideo', '-'],
                             capture_output=True, check=True).stdout
        base = subprocess.run(['ffmpeg', '-v', 'error', '-nostdin', '-i', self.source / 'faststart.mp4', '-frames:v', '1',
                               '-vf', 'format=rgba,format=rgb24', '-f', 'rawvideo', '-'], capture_output=True, check=True).stdout

        self.expect_blend(raw, base, 2)

    def test_mpv_blends_show_the_overlay(self):
        """The same in mpv, its two tracks blended by a filter of the player."""
        output = self.target / 'faststart-clean.mov'

        def first_frame(path, *options):
            with tempfile.TemporaryDirectory() as folder:
                media.run('mpv', '--no-config', '--really-quiet', '--no-audio', '--frames=1', '--vo=image',
                          '--vo-image-format=png', f'--vo-image-outdir={folder}', *options, path)
                frame = next(Path(folder).iterdir())
                return subprocess.run(['convert', frame, '-depth', '8', 'rgb:-'], capture_output=True, check=True).stdout
        raw = first_frame(output, '--lavfi-complex=[vid1]format=rgba[b];[b][vid2]overlay=format=rgb,format=rgb24[vo]')
        base = first_frame(self.source / 'faststart.mp4', '--vf=format=rgb24')
        self.expect_blend(raw, base, 3)

    def expect_blend(self, raw, base, tolerance):
        def pixel(image, x, y):
            return tuple(image[(y * 320 + x) * 3:(y * 320 + x) * 3 + 3])

        def expect(x, expected, within):
            for got, wanted in zip(pixel(raw, x, 30), expected):
                self.assertLessEqual(abs(got - wanted), within)
        expect(10, pixel(base, 10, 30), tolerance - 2)
        expect(90, (255, 0, 0), 0)
        expect(48, tuple(round((128 * r + 127 * b) / 255) for r, b in zip((255, 0, 0), pixel(base, 48, 30))), tolerance)


class Stills(JobCase):
    @classmethod
    def fill(cls):
        media.make_stills(cls.source)
        for name, path in media.fetch_real(CACHE).items():
            if path.suffix == '.jpg' and 'exif' not in name and name != 'empty.jpg':
                shutil.copy(path, cls.source / name)

    def stills(self):
        return [p for p in sorted(self.source.iterdir()) if p.name.endswith('jpg')]

    def output_of(self, path):
        return self.target / ((path.stem if path.suffix else path.name) + '-clean.jpg')

    def test_every_name_that_ends_in_jpg_has_an_output(self):
        self.assertEqual((self.job.returncode, self.job.stdout), (0, ''))
        self.assertEqual({p.name for p in self.target.iterdir()}, {self.output_of(p).name for p in self.stills()})

    def test_pictures_agree_with_an_independent_composite(self):
        """Through JPEG at quality 80 on both sides: close on average; exact comparison stands in the unit tests."""
        for path in self.stills():
            with self.subTest(still=path.name):
                expected = self.top / 'expected.png'
                media.run('convert', path, '-auto-orient', '-colorspace', 'sRGB', self.mask, '-compose', 'over', '-composite', expected)
                size = media.run('identify', '-format', '%wx%h', expected)
                self.assertEqual(media.run('identify', '-format', '%wx%h', self.output_of(path)), size)
                done = subprocess.run(['compare', '-metric', 'MAE', expected, self.output_of(path), 'null:'],
                                      capture_output=True, text=True)
                error = float(re.search(r'\(([\d.e+-]+)\)', done.stderr).group(1))
                self.assertLess(error, 0.03)

    def test_quality_density_and_colour(self):
        self.assertEqual(media.run('identify', '-format', '%Q', self.output_of(self.source / 'full.jpg')), '80')
        for name, density in (('dense.jpg', '240x120'), ('turned-dense.jpg', '120x240')):
            output = self.output_of(self.source / name)
            self.assertEqual(media.run('identify', '-units', 'PixelsPerInch', '-format', '%xx%y', output), density)
        for name in ('cmyk.jpg', 'grey.jpg'):
            self.assertIn(media.run('identify', '-format', '%[colorspace]', self.output_of(self.source / name)), ('sRGB', 'Gray'))


class OldOutputs(JobCase):
    """Source and target are one folder, with an older output in it that is a source of this job too."""

    @classmethod
    def fill(cls):
        cls.target = cls.source
        media.ffmpeg(*media.VIDEO, '-c:v', 'mpeg4', cls.source / 'clip.mov')
        media.ffmpeg(*media.VIDEO, '-vf', 'negate', '-c:v', 'mpeg4', cls.source / 'clip-clean.mov')

    def test_an_output_that_is_a_source_of_this_job_stays(self):
        self.assertTrue((self.source / 'clip-clean-clean.mov').exists())

    def test_sources_are_unchanged(self):
        self.assertEqual(self.before, {p: digest(p) for p in self.before})


if __name__ == '__main__':
    unittest.main()
