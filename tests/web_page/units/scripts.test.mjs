import assert from 'node:assert/strict';
import {spawnSync} from 'node:child_process';
import {mkdtempSync, readdirSync, readFileSync, rmSync, writeFileSync} from 'node:fs';
import {tmpdir} from 'node:os';
import {join} from 'node:path';
import test from 'node:test';
import {fileURLToPath} from 'node:url';

const PAGE = fileURLToPath(new URL('../../../web/page/', import.meta.url));
const JOIN = fileURLToPath(new URL('../../../cmake/JoinScripts.cmake', import.meta.url));

test('modules are joined, and an import that nothing exports is refused', () => {
    const folder = mkdtempSync(join(tmpdir(), 'plotterra-scripts-'));
    const joined = modules => {
        const paths = Object.entries(modules).map(([name, text]) => {
            writeFileSync(join(folder, name), text);
            return join(folder, name);
        });
        const output = join(folder, 'output.js');
        rmSync(output, {force: true});
        const run = spawnSync('cmake', [`-DOUTPUT=${output}`, `-DMODULES=${paths.join('|')}`, '-P', JOIN], {encoding: 'utf8'});
        return run.status === 0 ? readFileSync(output, 'utf8') : run.stderr.replace(/\s+/g, ' ');
    };
    const one = '// One\nexport const ONE = 1;\nexport function two() {\n    return 2;\n}\n';
    const use = "// Use\nimport {ONE,\n    two} from './one.js';\nglobalThis.sum = ONE + two();\n";
    try {
        const run = new Function('globalThis', `${joined({'one.js': one, 'use.js': use})}\nreturn globalThis.sum;`);
        assert.equal(run({}), 3);
        assert.match(joined({'one.js': one, 'use.js': use.replace('two}', 'three}')}), /use\.js: .*one\.js exports no three/);
        assert.match(joined({'use.js': use, 'one.js': one}), /use\.js: .*one\.js exports no ONE, or stands behind it/);
        assert.match(joined({'one.js': one, 'use.js': "// Use\nimport * as one from './one.js';\n"}), /use\.js: not an import by names/);
    } finally {
        rmSync(folder, {recursive: true});
    }
});

test('all modules but those that begin at once can be had without a browser', async () => {
    const modules = ['', 'relief/'].flatMap(folder => readdirSync(PAGE + folder).filter(name => name.endsWith('.js')).map(name => folder + name));
    for (const name of modules.filter(each => !['main.js', 'worker.js'].includes(each)))
        assert.notEqual(Object.keys(await import(PAGE + name)).length, 0, name);
    assert.ok(modules.length > 30);
});
