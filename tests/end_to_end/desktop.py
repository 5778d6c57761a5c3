"""A desktop of its own for the program: an X server without a screen, a window manager, and hands."""

import os
import signal
import subprocess
import time
from pathlib import Path

DEADLINE = 60  # seconds that anything may take before it counts as never happening
TICK = 0.02  # seconds between two looks


def wait_until(condition, what):
    """Looks until the condition gives something true, and gives that back."""
    end = time.monotonic() + DEADLINE
    while time.monotonic() < end:
        result = condition()
        if result:
            return result
        time.sleep(TICK)
    raise AssertionError(f'this never happened: {what}')


class Desktop:
    """Use it as a context. `scale` is the factor at which programs draw."""

    def __init__(self, home, size='1280x900', scale=1):
        self.home = Path(home)
        self.size = size
        self.scale = scale
        self.processes = []

    def __enter__(self):
        reading, writing = os.pipe()
        # Without -noreset the server starts afresh whenever its last client goes, as each look for
        # the window manager does, and drops one that is just connecting.
        self.start(['Xvfb', '-displayfd', str(writing), '-screen', '0', f'{self.size}x24',
                    '-nolisten', 'tcp', '-noreset'], pass_fds=[writing])
        os.close(writing)
        with os.fdopen(reading) as answer:
            number = answer.readline().strip()
        if not number:
            self.__exit__()
            raise AssertionError('the X server did not start')
        self.environment = {
            **os.environ, 'DISPLAY': f':{number}', 'HOME': str(self.home), 'LC_ALL': 'C.UTF-8',
            'XDG_CONFIG_HOME': str(self.home / '.config'), 'QT_SCALE_FACTOR': str(self.scale)}
        for name in ('QT_QPA_PLATFORM', 'WAYLAND_DISPLAY', 'XAUTHORITY'):
            self.environment.pop(name, None)
        self.start(['openbox', '--sm-disable'], env=self.environment)
        try:
            wait_until(lambda: '_NET_SUPPORTING_WM_CHECK(WINDOW)' in self.run(
                'xprop', '-root', '_NET_SUPPORTING_WM_CHECK'), 'the window manager is there')
        except AssertionError:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        for process in reversed(self.processes):
            if process.poll() is None:
                process.send_signal(signal.SIGCONT)
                process.terminate()
            process.wait()
            if process.stdout:
                process.stdout.close()

    def start(self, command, **options):
        options.setdefault('stdout', subprocess.DEVNULL)
        process = subprocess.Popen(command, stderr=subprocess.DEVNULL, **options)
        self.processes.append(process)
        return process

    def run(self, *command):
        """Runs a command on this desktop; gives back what it printed, whatever its status."""
        return subprocess.run(command, env=self.environment, capture_output=True, text=True,
                              check=False).stdout

    def window(self, title):
        """The window of that title once it is on the screen and has the keyboard."""
        def active():
            number = self.run('xdotool', 'getactivewindow').strip()
            name = self.run('xdotool', 'getwindowname', number).strip() if number else ''
            return number if name.startswith(title) else None
        return wait_until(active, f'the window "{title}" is in front')

    def size_of(self, window):
        """Width and height in pixels."""
        lines = self.run('xdotool', 'getwindowgeometry', '--shell', window).splitlines()
        values = dict(line.split('=') for line in lines if '=' in line)
        return int(values['WIDTH']), int(values['HEIGHT'])

    def key(self, *names):
        self.run('xdotool', 'key', '--clearmodifiers', *names)

    def type(self, text):
        self.run('xdotool', 'type', '--delay', '5', text)

    def click(self, window, right, bottom):
        """Clicks at this distance from the window's right and lower edge, in pixels at scale 1."""
        width, height = self.size_of(window)
        self.run('xdotool', 'mousemove', '--sync', '--window', window,
                 str(width - right * self.scale), str(height - bottom * self.scale), 'click', '1')

    def picture(self, window, path, crop=None):
        """Stores what the window shows, or a part of it as 'WIDTHxHEIGHT+X+Y'."""
        cropping = ['-crop', crop, '+repage'] if crop else []
        self.run('import', '-window', window, *cropping, str(path))
        return Path(path)

    def differing_pixels(self, one, other):
        done = subprocess.run(['compare', '-metric', 'AE', str(one), str(other), 'null:'],
                              capture_output=True, text=True, check=False)
        return float(done.stderr.split()[0])
