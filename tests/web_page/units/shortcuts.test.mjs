import assert from 'node:assert/strict';
import test from 'node:test';
import {isForShortcuts, isMenuKey} from '../../../web/page/shortcuts.js';

test('keys are the page\'s own unless something is written with them, or they are held', () => {
    const input = type => ({tagName: 'INPUT', type}), body = {tagName: 'BODY'};
    for (const [event, isOurs] of [
        [{key: 'r', target: body}, true], [{key: 'r', target: input('checkbox')}, true], [{key: '/', target: input('range')}, true],
        [{key: 'r', target: input('text')}, false], [{key: 'r', target: input('search')}, false], [{key: 'Backspace', target: {tagName: 'TEXTAREA'}}, false],
        [{key: 'Escape', target: input('search')}, true], [{key: 'Escape', target: input('search'), defaultPrevented: true}, false],
        ...['repeat', 'ctrlKey', 'metaKey', 'altKey'].map(held => [{key: 'r', target: body, [held]: true}, false])])
        assert.equal(isForShortcuts(event), isOurs, JSON.stringify(event));
    assert.deepEqual([{key: 'ContextMenu'}, {key: 'F10', shiftKey: true}, {key: 'F10', shiftKey: false}].map(isMenuKey), [true, true, false]);
});
