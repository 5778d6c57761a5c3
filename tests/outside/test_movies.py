"""Queries of movies beside ffprobe's, and copies of movies read with tools that are not ours.

Environment: QUILLMERE_MOVIE the program that tells and copies, QUILLMERE_CACHE a folder for downloads.
"""

import json
import os
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

import media

PROGRAM = os.environ['QUILLMERE_MOVIE']
CACHE = Path(os.environ['QUILLMERE_CACHE'])
HERE = Path(__file__).parent
SMALLEST_SET = 40

# What ffprobe tells otherwise, by file and field, and why.
OTHER_FILE = 'FFmpeg takes the data of other files from the movie itself'
GAP = 'time between fragments counts for the sample before it'
HEADER = 'the header tells of more time than the samples last, which FFmpeg counts'
ASPECT = 'the box of a track is that of square pixels'
EXPLAINED = {
    ('external.mov', 'vide bytes'): OTHER_FILE, ('external.mov', 'vide samples'): OTHER_FILE,
    ('external.mov', 'vide largest'): OTHER_FILE, ('external.mov', 'vide smallest'): OTHER_FILE,
    ('external.mov', 'soun bytes'): OTHER_FILE,
    ('fragmented.mp4', 'vide regular'): GAP, ('fragmented-base-moof.mp4', 'vide regular'): GAP,
    ('uneven.mp4', 'vide duration'): HEADER, ('VID_20191220_170832.mp4', 'vide duration'): HEADER,
    ('uneven.mp4', 'vide regular'): 'FFmpeg takes the durations of these packets from the frame rate',
    ('phone.3gp', 'vide size'): ASPECT, ('wide-pixels.mp4', 'vide size'): ASPECT,
}
# Copies that FFmpeg plays differently.
NOT_COMPARED = {
    'external.mov': OTHER_FILE,
    'pieces.mp4': 'without an edit that ends there, FFmpeg plays the last packet of sound whole',
}


def facts_of(path):
    return json.loads(media.run(PROGRAM, 'facts', path))


def probe(path, *more):
    return json.loads(media.run('ffprobe', '-v', 'error', '-of', 'json', '-show_streams', '-show_format', *more, path))


def packets_of(path):
    """All packets by stream, edit lists not applied."""
    found = {}
    for packet in probe(path, '-ignore_editlist', '1', '-show_packets', '-show_data_hash', 'md5')['packets']:
        found.setdefault(packet['stream_index'], []).append(packet)
    return found


class MovieCase(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = Path(tempfile.mkdtemp(prefix='quillmere-movies-'))
        for name in ('shapes', 'variants', 'real', 'copies'):
            (cls.folder / name).mkdir()
        cls.files = media.make_movies(cls.folder / 'shapes') + media.make_variants(cls.folder / 'variants')
        for name, path in media.fetch_real(CACHE).items():
            if not name.endswith('.jpg'):
                cls.files.append(Path(shutil.copy(path, cls.folder / 'real' / name)))

    @classmethod
    def tearDownClass(cls):
        shutil.rmtree(cls.folder, ignore_errors=True)

    def each(self, check):
        for path in self.files:
            with self.subTest(path.name):
                check(path)


class Queries(MovieCase):
    def expect(self, path, field, ours, theirs):
        reason = EXPLAINED.get((path.name, field))
        if reason is None:
            self.assertEqual(ours, theirs, field)
        else:
            self.assertNotEqual(ours, theirs, f'{field} agrees though {reason}')

    def test_there_are_enough_files(self):
        self.assertGreaterEqual(len(self.files), SMALLEST_SET)

    def test_movies_and_tracks(self):
        def check(path):
            facts = facts_of(path)
            theirs = probe(path, '-ignore_editlist', '1')
            packets = packets_of(path)
            self.expect(path, 'tracks', len(facts['tracks']), len(theirs['streams']))
            seconds = float(theirs['format']['duration'])
            self.expect(path, 'duration', abs(facts['duration'] / facts['timeScale'] - seconds) < 0.05, True)
            for track, stream in zip(facts['tracks'], theirs['streams']):
                self.track(path, track, stream, packets.get(stream['index'], []))
        self.each(check)

    def track(self, path, track, stream, packets):
        def expect(field, ours, theirs):
            self.expect(path, f'{track["type"]} {field}', ours, theirs)
        self.assertEqual(track['status'], 0)
        kinds = {'vide': 'video', 'soun': 'audio'}
        if track['type'] not in kinds:
            return
        expect('kind', kinds[track['type']], stream['codec_type'])
        expect('time scale', f'1/{track["timeScale"]}', stream['time_base'])
        expect('duration', track['mediaDuration'], stream.get('duration_ts'))
        expect('bytes', track['bytes'], sum(int(p['size']) for p in packets))
        if track['type'] == 'vide':
            expect('size', (track['width'], track['height']), (stream['width'], stream['height']))
            expect('samples', track['samples'], len(packets))
            sizes = [int(p['size']) for p in packets]
            expect('largest', track['largest'], max(sizes))
            expect('smallest', track['smallest'], min(sizes))
            expect('dependent', bool(track['dependent']), any('K' not in p['flags'] for p in packets))
            lasting = {p['duration'] for p in packets}
            expect('regular', track['commonDuration'] > 0, len(lasting) == 1)


class Copies(MovieCase):
    def copied(self, path, verb):
        target = self.folder / 'copies'
        name = f'{verb} {path.name}.mov'
        media.run(PROGRAM, verb, path, target, name)
        return target / name

    def test_samples_times_and_edits_stay(self):
        def check(path):
            for verb in ('copy', 'refer'):
                source = facts_of(path)
                copy = self.copied(path, verb)
                told = facts_of(copy)
                kept = [t for t in source['tracks'] if t['duration'] > 0]
                self.assertEqual(len(kept), len(told['tracks']))
                for a, b in zip(kept, told['tracks']):
                    self.assertEqual((a['type'], a['layer'], a['width'], a['height']),
                                     (b['type'], b['layer'], b['width'], b['height']))
                    seconds = a['duration'] / source['timeScale']
                    self.assertAlmostEqual(seconds, b['duration'] / told['timeScale'], delta=0.005)
                if verb == 'copy' and path.name not in NOT_COMPARED:
                    self.compare_shown(path, copy)
        self.each(check)

    def compare_shown(self, path, copy):
        """What plays, as FFmpeg sees it with edits: the same pictures and sound."""
        def shown(movie):
            done = subprocess.run(['ffmpeg', '-v', 'error', '-nostdin', '-i', str(movie), '-map', '0:v?', '-map',
                                   '0:a?', '-fps_mode', 'passthrough', '-f', 'streamhash', '-hash', 'md5', '-'],
                                  capture_output=True, text=True)
            return sorted(line.split('=')[-1] for line in done.stdout.split())
        self.assertEqual(shown(path), shown(copy))

    def test_other_readers_take_the_copies(self):
        def check(path):
            copy = self.copied(path, 'copy').rename(self.folder / 'copies' / f'{path.name}.read.mov')
            told = facts_of(copy)
            tracks = json.loads(media.run('node', HERE / 'mp4box_probe.mjs', CACHE / 'npm', copy))
            self.assertEqual([t['id'] for t in told['tracks']], [t['id'] for t in tracks])
            self.assertEqual([t['type'] for t in told['tracks']], [t['handler'] for t in tracks])
            for ours, theirs in zip(told['tracks'], tracks):
                self.assertEqual(ours['samples'], theirs['sampleCount'])
                self.assertGreaterEqual(theirs['edits'], ours['edits'])
            tags = json.loads(media.run('exiftool', '-n', '-json', '-Duration', copy))[0]
            self.assertAlmostEqual(float(tags['Duration']), told['duration'] / told['timeScale'], delta=0.01)
            seen = json.loads(media.run('mediainfo', '--Output=JSON', copy))['media']['track']
            self.assertEqual(sum(t['@type'] == 'Video' for t in seen), told['video'])
        self.each(check)


if __name__ == '__main__':
    unittest.main()
