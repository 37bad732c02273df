// Plot files: a place a line, `type;coordinate;label`.
import {placeOfText, textOfPlace} from './coordinates.js';

/** Marks as a plot file that Plotterra reads. A label cannot hold a semicolon or a line's end. */
export function plotFileOfMarks(marks) {
    return marks.map(mark => `mark;${textOfPlace(mark, 3)};${mark.name.replace(/[;\r\n]+/g, ',')}\n`).join('');
}

/** The places of a plot file; lines that name none are skipped. */
export function marksOfPlotFile(text) {
    const marks = [];
    for (const line of text.split('\n')) {
        const fields = line.replace(/\r$/, '').split(';');
        const place = fields.length >= 3 && placeOfText(fields[1]);
        if (place)
            marks.push({...place, name: fields[2] || textOfPlace(place)});
    }
    return marks;
}
