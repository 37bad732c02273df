// Runs the tests of the page's modules, without a browser: node run.mjs
import {readdirSync} from 'fs';
import {dirname} from 'path';

const folder = dirname(process.argv[1]);
for (const file of readdirSync(folder).filter(name => name.endsWith('.test.mjs')).sort())
    import(`${folder}/${file}`);
