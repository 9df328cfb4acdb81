/** Colours that come from data: only "#RRGGBB" is believed, anything else falls back. */

const NEUTRAL = '#7A837E';

/** Offered for new boards. */
export const BOARD_COLORS = [
  { name: 'Pine', hex: '#0B6B50' },
  { name: 'Teal', hex: '#1B8A8F' },
  { name: 'Sky', hex: '#2F7DD1' },
  { name: 'Indigo', hex: '#5457C9' },
  { name: 'Violet', hex: '#8A4FC2' },
  { name: 'Berry', hex: '#C23D7E' },
  { name: 'Brick', hex: '#C24A38' },
  { name: 'Amber', hex: '#C07A12' },
  { name: 'Moss', hex: '#6B8A2B' },
  { name: 'Slate', hex: '#5F6B73' },
];

/** @param {unknown} color @returns {string} */
export const safeColor = (color) => (/^#[0-9a-f]{6}$/i.test(String(color ?? '')) ? color : NEUTRAL);

/**
 * Black or white, whichever reads better on the colour (WCAG relative luminance): with pure black one of them always
 * reaches a contrast of 4.5.
 * @param {string} color
 */
export function inkOn(color) {
  const hex = safeColor(color);
  const [red, green, blue] = [1, 3, 5].map((at) => {
    const part = parseInt(hex.slice(at, at + 2), 16) / 255;
    return part <= 0.04045 ? part / 12.92 : ((part + 0.055) / 1.055) ** 2.4;
  });
  return 0.2126 * red + 0.7152 * green + 0.0722 * blue > 0.179 ? '#000000' : '#FFFFFF';
}

const TONES = ['gray', 'red', 'orange', 'yellow', 'green', 'teal', 'blue', 'purple', 'pink'];
export const LABEL_TONES = TONES;

/** @param {string} tone */
export const toneClass = (tone) => `tone-${TONES.includes(tone) ? tone : 'gray'}`;
