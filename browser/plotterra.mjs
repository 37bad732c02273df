// node plotterra.mjs <program> [<argument>...]: runs one of the programs, with its own arguments, output
// and status.

import makeEngine from "./engine.mjs";

const [program, ...words] = process.argv.slice(2);
makeEngine({ thisProgram: program ?? "plotterra.mjs", arguments: words });
