// Plot files: a place a line, `type;coordinate;label`.
import {isInWorld, placeOfText, textOfPlace} from './coordinates.js';

/** Marks as a plot file that Plotterra reads. A label cannot hold a semicolon or a line's end. */
export function plotFileOfMarks(marks) {
    return marks.map(mark => `mark;${textOfPlace(mark, 3)};${mark.name.replace(/[;\r\n]+/g, ',')}\n`).join('');
}

/** `marks`: the places of a plot file; `skipped`: the numbers of lines that name none on the map, counted from 1. */
export function marksOfPlotFile(text) {
    const marks = [], skipped = [];
    text.split('\n').forEach((line, index) => {
        const fields = line.replace(/\r$/, '').split(';'), place = fields.length >= 3 && placeOfText(fields[1]);
        if (place && isInWorld(place))
            marks.push({...place, name: fields[2] || textOfPlace(place)});
        else if (line.trim() !== '')
            skipped.push(index + 1);
    });
    return {marks, skipped};
}
