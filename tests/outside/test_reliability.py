"""What the job leaves behind when things go wrong.

Environment: QUILLMERE_BATCH the batch driver; QUILLMERE_KILLS how often it is killed (default 20).
"""

import hashlib
import os
import random
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

import media

DRIVER = os.environ['QUILLMERE_BATCH']
KILLS = int(os.environ.get('QUILLMERE_KILLS', '20'))
NOBODY = ['setpriv', '--reuid', '65534', '--regid', '65534', '--clear-groups']


def digests(folder):
    return {p.relative_to(folder): hashlib.sha256(p.read_bytes()).hexdigest()
            for p in sorted(Path(folder).rglob('*')) if p.is_file()}


def whole(path):
    """True if an independent reader gets every packet of the movie or the whole picture."""
    command = (['djpeg', '-outfile', '/dev/null', path] if path.suffix == '.jpg' and shutil.which('djpeg') else
               ['ffmpeg', '-v', 'error', '-xerror', '-nostdin', '-i', path, '-map', '0', '-c', 'copy', '-f', 'null', '-'])
    done = subprocess.run(command, capture_output=True, text=True)
    return done.returncode == 0 and not done.stderr


class Reliability(unittest.TestCase):
    def setUp(self):
        self.top = Path(tempfile.mkdtemp(prefix='quillmere-reliability-'))
        self.addCleanup(shutil.rmtree, self.top, ignore_errors=True)
        self.source, self.target, self.mask = self.top / 'source', self.top / 'target', self.top / 'mask.png'
        self.source.mkdir()
        self.target.mkdir()
        media.make_mask(self.mask)

    def make_clip(self, name='clip.mov', seconds=1):
        media.ffmpeg('-f', 'lavfi', '-i', f'testsrc=size=320x240:rate=25:duration={seconds}', '-f', 'lavfi', '-i',
                     f'sine=duration={seconds}', '-c:v', 'mjpeg', '-c:a', 'pcm_s16le', self.source / name)
        return self.source / name

    def run_job(self, before=(), **options):
        return subprocess.run([*before, DRIVER, self.mask, self.source, self.target], capture_output=True, text=True,
                              timeout=600, **options)

    def outputs(self):
        return sorted(p.name for p in self.target.iterdir())

    def test_killed_at_random_moments(self):
        for i in range(12):
            self.make_clip(f'clip{i:02}.mov', seconds=4)
        shutil.copy(self.source / 'clip00.mov', self.top / 'spare.mov')
        for i in range(8):
            media.run('convert', '-size', '1600x1200', 'plasma:', self.source / f'still{i}.jpg')
        before = digests(self.source)
        dice = random.Random(1)
        for _ in range(KILLS):
            shutil.rmtree(self.target)
            self.target.mkdir()
            process = subprocess.Popen([DRIVER, self.mask, self.source, self.target], stdout=subprocess.DEVNULL)
            try:
                process.wait(timeout=dice.uniform(0.05, 0.6))
            except subprocess.TimeoutExpired:
                process.kill()
            process.wait()
            finished = [p for p in self.target.iterdir() if '-clean.' in p.name and not p.name.startswith('.')]
            for output in finished:
                self.assertTrue(whole(output), output)
        self.assertEqual(before, digests(self.source))
        self.assertEqual(self.run_job().returncode, 0)
        self.assertEqual(len([n for n in self.outputs() if '-clean.' in n]), 20)

    def test_a_job_loads_no_decoders(self):
        self.make_clip()
        media.ffmpeg('-f', 'lavfi', '-i', 'testsrc=size=64x48', '-frames:v', '1', self.source / 'still.jpg')
        done = self.run_job(env={**os.environ, 'LD_DEBUG': 'files'})
        self.assertEqual(done.returncode, 0)
        self.assertEqual(self.outputs(), ['clip-clean.mov', 'still-clean.jpg'])
        self.assertIn('libjpeg', done.stderr)
        self.assertNotRegex(done.stderr, r'lib(av|sw)[a-z]+\.so')

    def test_full_disk(self):
        self.make_clip('a.mov', seconds=1)
        self.make_clip('b.mov', seconds=8)
        self.make_clip('c.mov', seconds=1)
        small = (self.source / 'a.mov').stat().st_size
        if subprocess.run(['mount', '-t', 'tmpfs', '-o', f'size={small * 4}', 'tmpfs', self.target],
                          capture_output=True).returncode:
            self.skipTest('no small file system can be mounted here')
        self.addCleanup(subprocess.run, ['umount', self.target], check=True)
        before = digests(self.source)
        done = self.run_job()
        self.assertEqual((done.returncode, done.stdout), (0, ''))  # a flatten's failure is not reported
        self.assertEqual(self.outputs(), ['a-clean.mov', 'c-clean.mov'])
        self.assertTrue(all(whole(p) for p in self.target.iterdir()))
        self.assertEqual(before, digests(self.source))

    def test_target_without_write_permission(self):
        if os.geteuid() != 0:
            self.skipTest('needs root to become another user')
        self.make_clip()
        media.run('convert', '-size', '64x48', 'plasma:', self.source / 'still.jpg')
        os.chmod(self.top, 0o755)
        for path in self.top.rglob('*'):
            os.chmod(path, 0o755 if path.is_dir() else 0o644)
        done = self.run_job(NOBODY, env={**os.environ, 'HOME': '/nonexistent'})
        self.assertEqual((done.returncode, done.stdout), (0, ''))
        self.assertEqual(self.outputs(), [])

    def test_source_without_read_permission(self):
        if os.geteuid() != 0:
            self.skipTest('needs root to become another user')
        self.make_clip('a.mov')
        self.make_clip('b.mov')
        os.chmod(self.top, 0o755)
        for path in self.top.rglob('*'):
            os.chmod(path, 0o777 if path.is_dir() else 0o644)
        os.chmod(self.source / 'a.mov', 0)
        done = self.run_job(NOBODY, env={**os.environ, 'HOME': '/nonexistent'})
        self.assertRegex(done.stdout, r'\AQT_OpenMovieFileFP failed with error -\d+\n\Z')
        self.assertEqual(self.outputs(), ['b-clean.mov'])

    def test_dangling_links_and_folders_named_like_media(self):
        self.make_clip('a.mov')
        (self.source / 'gone.mov').symlink_to(self.top / 'nothing.mov')
        (self.source / 'folder.mov').mkdir()
        done = self.run_job()
        self.assertEqual(self.outputs(), ['a-clean.mov'])
        self.assertEqual(done.returncode, 0)

    def test_source_truncated_everywhere(self):
        clip = self.make_clip().read_bytes()
        fast = self.top / 'fast.mov'
        media.ffmpeg('-i', self.source / 'clip.mov', '-map', '0', '-c', 'copy', '-movflags', '+faststart', fast)
        (self.source / 'clip.mov').unlink()
        for name, data in (('last', clip), ('first', fast.read_bytes())):
            for i in range(50):
                (self.source / f'{name}{i:02}.mov').write_bytes(data[:len(data) * i // 50])
        (self.source / 'whole.mov').write_bytes(clip)
        before = digests(self.source)
        done = self.run_job()
        self.assertEqual(self.outputs(), ['whole-clean.mov'])
        self.assertEqual(done.returncode, 0)
        lines = set(done.stdout.splitlines())
        self.assertTrue(lines)
        for line in lines:
            self.assertRegex(line, r'\AQT_OpenMovieFileFP failed with error -\d+\Z')
        self.assertEqual(before, digests(self.source))

    def test_truncated_stills_show_what_is_there(self):
        """A cut picture gives its beginning and a message, or a status, and never stops the others."""
        media.run('convert', '-size', '640x480', 'plasma:red-blue', '-seed', '3', '-quality', '90', self.top / 'whole.jpg')
        whole_bytes = (self.top / 'whole.jpg').read_bytes()
        for i in range(50):
            (self.source / f'cut{i:02}.jpg').write_bytes(whole_bytes[:len(whole_bytes) * i // 50])
        shutil.copy(self.top / 'whole.jpg', self.source / 'whole.jpg')
        before = digests(self.source)
        done = self.run_job(env=dict(os.environ, LC_ALL='C.UTF-8'))
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        outputs = self.outputs()
        self.assertIn('whole-clean.jpg', outputs)
        self.assertIn('cut45-clean.jpg', outputs)
        self.assertNotIn('cut00-clean.jpg', outputs)
        self.assertTrue(all(whole(self.target / name) for name in outputs))
        parts = []
        for name in ('cut45', 'whole'):
            parts.append(self.top / f'{name}.ppm')
            media.run('convert', self.target / f'{name}-clean.jpg', '-crop', '200x200+300+0', parts[-1])
        self.assertEqual(parts[0].read_bytes(), parts[1].read_bytes())
        self.assertEqual(before, digests(self.source))

    def test_a_very_large_still(self):
        """12,000 by 9,000 pixels: rendered whole, corners and middle as in the source."""
        media.ffmpeg('-f', 'lavfi', '-i', 'testsrc2=size=12000x9000:rate=1', '-frames:v', '1', '-pix_fmt', 'yuvj420p',
                     '-q:v', '2', '-f', 'mjpeg', self.source / 'large.jpg')
        done = self.run_job()
        self.assertEqual((done.returncode, done.stdout), (0, ''))
        output = self.target / 'large-clean.jpg'

        def part(path, x, y):
            crop = ['ffmpeg', '-v', 'error', '-nostdin', '-i', path, '-vf', f'crop=64:64:{x}:{y},format=rgb24', '-f', 'rawvideo', '-']
            return subprocess.run(crop, capture_output=True, check=True).stdout
        for x, y in ((11936, 8936), (6000, 4500), (0, 8936), (11936, 0)):
            ours, theirs = part(output, x, y), part(self.source / 'large.jpg', x, y)
            self.assertEqual(len(ours), 64 * 64 * 3)
            self.assertLess(sum(abs(a - b) for a, b in zip(ours, theirs)) / len(ours), 4)

    def test_source_that_vanishes(self):
        """Files that go while the job runs are reported or passed over; the others come out whole."""
        first = self.make_clip('clip00.mov', seconds=4)
        for i in range(1, 30):
            shutil.copy(first, self.source / f'clip{i:02}.mov')
        job = subprocess.Popen([DRIVER, self.mask, self.source, self.target], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        for i in range(29, 0, -2):
            (self.source / f'clip{i:02}.mov').unlink()
        output, _ = job.communicate(timeout=600)
        names = self.outputs()
        self.assertTrue({f'clip{i:02}-clean.mov' for i in range(0, 30, 2)} <= set(names), output)
        self.assertTrue(all(whole(self.target / name) for name in names))

    def test_mask_that_is_no_png(self):
        self.make_clip()
        for content in (b'', b'not a picture at all', b'\x89PNG\r\n\x1a\n', self.mask.read_bytes()[:40]):
            self.mask.write_bytes(content)
            done = self.run_job()
            self.assertNotEqual(done.returncode, 0)
            self.assertRegex(done.stdout, r'\AQT_PrepareReadingImageFromFile failed with error -\d+\n'
                                          r'QM_ApplyMask exiting after error\n'
                                          r'QM_ApplyMask failed with error -\d+\n'
                                          r'QM_HandleDlgControlHit exiting after error\n'
                                          r'QM_HandleDlgContrHit failed with error -\d+\n\Z')
            self.assertEqual(self.outputs(), [])

    def test_folder_of_ten_thousand_files(self):
        self.make_clip('a.mov')
        media.run('convert', '-size', '64x48', 'plasma:', self.source / 'still.jpg')
        for i in range(10000):
            (self.source / f'note{i}.txt').write_text('nothing to see')
        done = self.run_job()
        self.assertEqual((done.returncode, done.stdout), (0, ''))
        self.assertEqual(self.outputs(), ['a-clean.mov', 'still-clean.jpg'])

    def test_a_failing_last_still_is_the_result(self):
        media.run('convert', '-size', '64x48', 'plasma:', self.source / 'a.jpg')
        (self.source / 'b.jpg').write_bytes(b'no picture')
        done = self.run_job()
        self.assertNotEqual(done.returncode, 0)
        self.assertRegex(done.stdout, r'\AQT_OpenMovieFileFP failed with error -\d+\nQM_ApplyMask exiting after error\n'
                                      r'QM_ApplyMask failed with error -\d+\nQM_HandleDlgControlHit exiting after error\n'
                                      r'QM_HandleDlgContrHit failed with error -\d+\n\Z')
        self.assertEqual(self.outputs(), ['a-clean.jpg'])


if __name__ == '__main__':
    unittest.main()
