"""The real program on a desktop, worked by keyboard and mouse.

QUILLMERE names the program. QUILLMERE_PICTURES may name a folder that takes pictures of the window.
"""

import os
import shutil
import signal
import subprocess
import tempfile
import unittest
from pathlib import Path

from desktop import Desktop, wait_until

PROGRAM = os.environ['QUILLMERE']
SAMPLES = Path(__file__).parents[2] / 'tools' / 'make-samples'
APPLY = (75, 32)  # the button's distance from the window's lower right corner


def make_long_movie(path, megabytes):
    """A movie of plain pictures: 1 MiB a frame."""
    subprocess.run(['ffmpeg', '-v', 'error', '-nostdin', '-y', '-f', 'lavfi', '-i',
                    f'color=s=512x512:r=25:d={megabytes / 25}', '-pix_fmt', 'rgba',
                    '-c:v', 'rawvideo', str(path)], check=True)


class WindowTest(unittest.TestCase):
    def setUp(self):
        self.folder = Path(tempfile.mkdtemp(prefix='quillmere-window-'))
        self.addCleanup(shutil.rmtree, self.folder)
        subprocess.run([str(SAMPLES), str(self.folder)], check=True)
        self.source = self.folder / 'source'
        self.target = self.folder / 'target'
        self.pictures = Path(os.environ.get('QUILLMERE_PICTURES') or self.folder)
        self.pictures.mkdir(parents=True, exist_ok=True)

    def start(self, scale=1):
        self.desktop = self.enterContext(Desktop(self.folder, scale=scale))
        self.output = self.folder / 'printed'
        with open(self.output, 'w') as printed:
            self.program = self.desktop.start([PROGRAM], env=self.desktop.environment,
                                              cwd=self.folder, stdout=printed)
        self.main = self.desktop.window('Quillmere')

    def choose(self, keys, title, path):
        """Opens a picker, types a path and waits until the window is in front again."""
        self.desktop.key(keys)
        self.desktop.window(title)
        self.desktop.type(str(path))
        self.desktop.key('Return')
        self.assertEqual(self.main, self.desktop.window('Quillmere'))

    def choose_all(self):
        self.choose('alt+m', 'Please select a png file', self.folder / 'mask.png')
        self.choose('alt+s', 'Please select the source folder', self.source)
        self.choose('alt+t', 'Please select the target folder', self.target)

    def outputs_being_written(self):
        """What the program holds open in the target folder, named or not."""
        found = []
        for entry in Path(f'/proc/{self.program.pid}/fd').iterdir():
            try:
                if os.readlink(entry).startswith(f'{self.target}/'):
                    found.append(entry)
            except FileNotFoundError:
                pass  # closed in the meantime
        return found

    def fields(self, name):
        """The part of the window that shows names, counts and the preview."""
        width, height = self.desktop.size_of(self.main)
        return self.desktop.picture(self.main, self.folder / f'fields-{name}.png',
                                    f'{width - 180}x{height - 180}+180+100')

    def wait_for_fields(self, like, equal, what):
        wait_until(lambda: (self.desktop.differing_pixels(self.fields('now'), like) == 0) == equal,
                   what)

    def keep_picture(self, name):
        self.desktop.picture(self.main, self.pictures / f'{name}.png')

    def test_one_whole_job(self):
        make_long_movie(self.source / 'long.mov', 400)
        self.start()
        self.keep_picture('idle')
        idle = self.fields('idle')

        # Apply does nothing while something is missing, and a cancelled picker changes nothing.
        self.desktop.key('alt+a')
        self.desktop.key('alt+s')
        self.desktop.window('Please select the source folder')
        self.desktop.key('Escape')
        self.assertEqual(self.main, self.desktop.window('Quillmere'))
        self.assertEqual(0, self.desktop.differing_pixels(idle, self.fields('now')))
        self.assertEqual([], list(self.target.iterdir()))

        self.choose_all()
        self.wait_for_fields(idle, False, 'the choices are shown')
        self.keep_picture('ready')

        # The job stands still for its picture while the long movie is copied.
        self.desktop.click(self.main, *APPLY)
        wait_until(lambda: (self.target / 'bars-clean.mov').exists() and
                   self.outputs_being_written(), 'the second movie is being written')
        self.program.send_signal(signal.SIGSTOP)
        self.keep_picture('running')
        self.program.send_signal(signal.SIGCONT)

        expected = {'bars-clean.mov', 'long-clean.mov', 'tape-clean.mov', 'zoom-clean.mov',
                    'bars-clean.jpg', 'fractal-clean.jpg'}
        wait_until(lambda: {path.name for path in self.target.iterdir()} == expected,
                   'all outputs are there')
        self.wait_for_fields(idle, True, 'the fields are empty again')
        self.keep_picture('finished')

        self.desktop.key('ctrl+w')
        self.assertEqual(0, self.program.wait(timeout=60))
        self.assertEqual('', self.output.read_text())

    def test_closing_the_window_ends_the_job(self):
        make_long_movie(self.source / 'long.mov', 600)
        self.start()
        self.choose_all()
        self.desktop.key('alt+a')
        wait_until(lambda: (self.target / 'bars-clean.mov').exists() and
                   self.outputs_being_written(), 'the long movie is being written')
        self.program.send_signal(signal.SIGSTOP)
        self.assertFalse((self.target / 'long-clean.mov').exists())
        self.desktop.key('alt+F4')
        self.program.send_signal(signal.SIGCONT)
        self.assertEqual(0, self.program.wait(timeout=60))
        self.assertEqual({'bars-clean.mov'}, {path.name for path in self.target.iterdir()})


if __name__ == '__main__':
    unittest.main()
