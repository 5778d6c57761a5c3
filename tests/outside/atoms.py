"""A small reader and patcher of movie files, independent of the program: makes the shapes that FFmpeg does not write."""

import struct
import zlib

CONTAINERS = {b'moov', b'trak', b'mdia', b'minf', b'stbl', b'edts', b'dinf', b'gmhd'}


class Atom:
    """One atom: `data` of a leaf, or `children` of a container."""

    def __init__(self, kind, data=b'', children=None):
        self.kind, self.data, self.children = kind, data, children

    def bytes(self):
        body = self.data if self.children is None else b''.join(c.bytes() for c in self.children)
        return struct.pack('>I4s', len(body) + 8, self.kind) + body

    def find(self, *path):
        """All atoms at a path of types below this one."""
        found = [self]
        for kind in path:
            found = [c for a in found for c in (a.children or []) if c.kind == kind]
        return found

    def first(self, *path):
        found = self.find(*path)
        return found[0] if found else None


def parse(data, kind=b'root'):
    children, at = [], 0
    while at + 8 <= len(data):
        size, child = struct.unpack_from('>I4s', data, at)
        header = 8
        if size == 1:
            size, header = struct.unpack_from('>Q', data, at + 8)[0], 16
        elif size == 0:
            size = len(data) - at
        body = data[at + header:at + size]
        if child in CONTAINERS:
            inner = parse(body, child)
            children.append(inner)
        else:
            children.append(Atom(child, body))
        at += size
    return Atom(kind, children=children)


class MovieFile:
    """A movie of `ftyp`, `moov` and one or more `mdat`, that can be changed and written again."""

    def __init__(self, path):
        with open(path, 'rb') as f:
            self.raw = f.read()
        self.top = []
        at = 0
        while at + 8 <= len(self.raw):
            size, kind = struct.unpack_from('>I4s', self.raw, at)
            header = 8
            if size == 1:
                size, header = struct.unpack_from('>Q', self.raw, at + 8)[0], 16
            elif size == 0:
                size = len(self.raw) - at
            self.top.append((kind, at, header, size))
            at += size
        self.moov = next(parse(self.raw[a + h:a + s], b'moov') for k, a, h, s in self.top if k == b'moov')

    def mdats(self):
        return [(a + h, self.raw[a + h:a + s]) for k, a, h, s in self.top if k == b'mdat']

    def traks(self):
        return self.moov.find(b'trak')

    def chunk_offsets(self, trak):
        stco = trak.first(b'mdia', b'minf', b'stbl', b'stco')
        count = struct.unpack_from('>I', stco.data, 4)[0]
        return list(struct.unpack_from(f'>{count}I', stco.data, 8))

    def set_chunk_offsets(self, trak, offsets):
        stco = trak.first(b'mdia', b'minf', b'stbl', b'stco')
        stco.data = stco.data[:8] + struct.pack(f'>{len(offsets)}I', *offsets)

    def write(self, path, compressed=False, wide_size=False, split_at=None, moov_first=False):
        """Writes ftyp, then the media data in one or (split_at a chunk offset) two mdat, and the moov."""
        ftyp = struct.pack('>I4s4sI4s', 20, b'ftyp', b'qt  ', 0x200, b'qt  ')
        start, media = self.mdats()[0]
        parts = [(start, media)]
        if split_at is not None:
            parts = [(start, media[:split_at - start]), (split_at, media[split_at - start:])]
        header = 16 if wide_size else 8
        moov_size = len(self._moov_bytes(compressed)) if moov_first else 0
        at, moves = len(ftyp) + moov_size, []
        for old, part in parts:
            moves.append((old, len(part), at + header))
            at += header + len(part)
        self._move(moves)
        out = [ftyp]
        if moov_first:
            out.append(self._moov_bytes(compressed))
            assert len(out[-1]) == moov_size, 'a compressed moov cannot come first'
        for _, part in parts:
            out.append(struct.pack('>I4sQ', 1, b'mdat', len(part) + 16) if wide_size
                       else struct.pack('>I4s', len(part) + 8, b'mdat'))
            out.append(part)
        if not moov_first:
            out.append(self._moov_bytes(compressed))
        with open(path, 'wb') as f:
            f.write(b''.join(out))

    def _move(self, moves):
        for trak in self.traks():
            if trak.first(b'mdia', b'minf', b'stbl', b'stco') is None:
                continue
            def moved(offset):
                for old, size, new in moves:
                    if old <= offset < old + size:
                        return offset - old + new
                return offset
            self.set_chunk_offsets(trak, [moved(o) for o in self.chunk_offsets(trak)])

    def _moov_bytes(self, compressed):
        plain = self.moov.bytes()
        if not compressed:
            return plain
        dcom = Atom(b'dcom', b'zlib')
        cmvd = Atom(b'cmvd', struct.pack('>I', len(plain)) + zlib.compress(plain))
        return Atom(b'moov', children=[Atom(b'cmov', dcom.bytes() + cmvd.bytes())]).bytes()


def be32(value):
    return struct.pack('>I', value & 0xFFFFFFFF)


def set_bytes(atom, at, new):
    atom.data = atom.data[:at] + new + atom.data[at + len(new):]


def edit_list(entries):
    """An edts atom of (duration in movie units, media time, rate as 16.16) entries."""
    body = be32(0) + be32(len(entries)) + b''.join(struct.pack('>Iii', *e) for e in entries)
    return Atom(b'edts', children=[Atom(b'elst', body)])
