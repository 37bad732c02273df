// Letters on the land.

/** Whether a view's land is so dark that letters on it are light. */
export const isDarkLand = settings => settings.get('base') === 'height' || settings.get('types').length > 0 && settings.get('base') === 'land';

/** Dark letters with a light edge, readable on most land; or the other way round, on dark land. */
export function paintLabel(context, text, x, y, align, isLight = false) {
    context.textAlign = align;
    context.lineJoin = 'round';
    context.lineWidth = 3;
    context.strokeStyle = isLight ? 'rgba(0, 0, 0, 0.75)' : 'rgba(255, 255, 255, 0.85)';
    context.strokeText(text, x, y);
    context.fillStyle = isLight ? '#ffffff' : '#1b1b1b';
    context.fillText(text, x, y);
}
