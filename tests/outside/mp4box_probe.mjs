// Prints, as JSON, what mp4box.js reads of each track of a movie: node mp4box_probe.mjs MODULE_FOLDER FILE
import { readFileSync } from 'node:fs';
import { createRequire } from 'node:module';
import { pathToFileURL } from 'node:url';
import path from 'node:path';

const [modules, file] = process.argv.slice(2);
const require = createRequire(path.join(modules, 'package.json'));
const mp4box = await import(pathToFileURL(require.resolve('mp4box')).href);
const { createFile } = mp4box.default ?? mp4box;

const iso = createFile();
iso.onError = (error) => { console.error(error); process.exit(1); };
const bytes = readFileSync(file);
const buffer = bytes.buffer.slice(bytes.byteOffset, bytes.byteOffset + bytes.byteLength);
buffer.fileStart = 0;
iso.appendBuffer(buffer);
iso.flush();

const tracks = iso.moov.traks.map((trak) => ({
  id: trak.tkhd.track_id,
  flags: trak.tkhd.flags,
  layer: trak.tkhd.layer,
  handler: trak.mdia.hdlr.handler,
  edits: trak.edts?.elst?.entries?.length ?? 0,
  graphicsMode: trak.mdia.minf.vmhd?.graphicsmode ?? null,
  samples: trak.samples_size ?? trak.mdia.minf.stbl.stsz?.sample_sizes?.length ?? 0,
  sampleCount: trak.samples?.length ?? 0,
  // Kinds of references that it does not know keep their content: version, then 24 bits of flags.
  references: (trak.mdia.minf.dinf?.dref?.entries ?? []).map((entry) => entry.flags ?? entry.data[3]),
}));
console.log(JSON.stringify(tracks));
