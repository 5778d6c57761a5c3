"""Makes a movie of many tiny chunks: sound tracks whose chunks hold 50 frames each.

usage: tiny_chunks.py MOVIE [CHUNKS_PER_TRACK] [apart]

With "apart" each track's media data stands in one piece behind that of the track before; otherwise the
chunks of the tracks take turns.
"""

import array
import os
import struct
import sys

TRACKS = 3
FRAMES, FRAME_SIZE, RATE = 50, 4, 44100
CHUNK_SIZE = FRAMES * FRAME_SIZE


def atom(kind, *parts):
    body = b''.join(parts)
    return struct.pack('>I4s', len(body) + 8, kind) + body


def full(kind, *parts):
    return atom(kind, bytes(4), *parts)


def be(*numbers):
    return struct.pack(f'>{len(numbers)}I', *numbers)


MATRIX = be(0x10000, 0, 0, 0, 0x10000, 0, 0, 0, 0x40000000)


def track(number, offsets):
    frames = len(offsets) * FRAMES
    table = array.array('I', offsets)
    table.byteswap()
    entry = atom(b'twos', bytes(6), struct.pack('>HHHIHHHHI', 1, 0, 0, 0, 2, 16, 0, 0, RATE << 16))
    stbl = atom(b'stbl', full(b'stsd', be(1), entry), full(b'stts', be(1, frames, 1)),
                full(b'stsc', be(1, 1, FRAMES, 1)), full(b'stsz', be(FRAME_SIZE, frames)),
                full(b'stco', be(len(offsets)), table.tobytes()))
    dinf = atom(b'dinf', full(b'dref', be(1), atom(b'alis', be(1))))
    minf = atom(b'minf', full(b'smhd', be(0)), dinf, stbl)
    mdia = atom(b'mdia', full(b'mdhd', be(0, 0, RATE, frames, 0)), full(b'hdlr', b'mhlrsoun', bytes(12), b'\0'), minf)
    tkhd = atom(b'tkhd', be(15, 0, 0, number, 0, frames, 0, 0, 0, 0x01000000), MATRIX, be(0, 0))
    return atom(b'trak', tkhd, mdia)


def make(path, chunks, apart):
    """Writes the movie, its `moov` behind the media data."""
    start = 28
    if apart:
        offsets = [range(start + t * chunks * CHUNK_SIZE, start + (t + 1) * chunks * CHUNK_SIZE, CHUNK_SIZE)
                   for t in range(TRACKS)]
    else:
        step = TRACKS * CHUNK_SIZE
        offsets = [range(start + t * CHUNK_SIZE, start + t * CHUNK_SIZE + chunks * step, step) for t in range(TRACKS)]
    frames = chunks * FRAMES
    mvhd = full(b'mvhd', be(0, 0, RATE, frames, 0x10000, 0x01000000, 0, 0), MATRIX, bytes(24), be(TRACKS + 1))
    moov = atom(b'moov', mvhd, *(track(t + 1, offsets[t]) for t in range(TRACKS)))
    size = TRACKS * chunks * CHUNK_SIZE
    with open(path, 'wb') as f:
        f.write(struct.pack('>I4s4sI4s', 20, b'ftyp', b'qt  ', 0x200, b'qt  ') + struct.pack('>I4s', size + 8, b'mdat'))
        block = os.urandom(1 << 20)
        for at in range(0, size, len(block)):
            f.write(block[:size - at])
        f.write(moov)


if __name__ == '__main__':
    make(sys.argv[1], int(sys.argv[2]) if len(sys.argv) > 2 else 1153333, 'apart' in sys.argv)
