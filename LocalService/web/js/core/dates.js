/** Civil dates as "YYYY-MM-DD" text. They are days on a wall calendar, never instants, so no time zone touches them. */

const DAY = 86_400_000;
const WEEKDAYS = ['Sunday', 'Monday', 'Tuesday', 'Wednesday', 'Thursday', 'Friday', 'Saturday'];
const MONTHS = [
  'January',
  'February',
  'March',
  'April',
  'May',
  'June',
  'July',
  'August',
  'September',
  'October',
  'November',
  'December',
];

const pad = (number, width = 2) => String(number).padStart(width, '0');

/** @param {number} year @param {number} month 1 to 12 @param {number} day */
const dateText = (year, month, day) => `${pad(year, 4)}-${pad(month)}-${pad(day)}`;

/** The day on this machine's calendar. @param {Date} [now] */
export function today(now = new Date()) {
  return dateText(now.getFullYear(), now.getMonth() + 1, now.getDate());
}

/** Days since 1970-01-01. @param {string} text */
export function dayNumber(text) {
  const [year, month, day] = text.split('-').map(Number);
  return Math.round(Date.UTC(year, month - 1, day) / DAY);
}

/** @param {number} number days since 1970-01-01 */
function fromNumber(number) {
  const date = new Date(number * DAY);
  return dateText(date.getUTCFullYear(), date.getUTCMonth() + 1, date.getUTCDate());
}

export const addDays = (text, days) => fromNumber(dayNumber(text) + days);

/** Keeps the day of the month where the month has it. */
export function addMonths(text, months) {
  const [year, month, day] = text.split('-').map(Number);
  const index = year * 12 + (month - 1) + months;
  const targetYear = Math.floor(index / 12);
  const targetMonth = (index % 12) + 1;
  return dateText(targetYear, targetMonth, Math.min(day, daysInMonth(targetYear, targetMonth)));
}

const daysInMonth = (year, month) => new Date(Date.UTC(year, month, 0)).getUTCDate();

/** Sunday is 0. */
export const weekday = (text) => (((dayNumber(text) + 4) % 7) + 7) % 7;

/** Weeks start on Monday. */
export const startOfWeek = (text) => addDays(text, -((weekday(text) + 6) % 7));

export const startOfMonth = (text) => `${text.slice(0, 7)}-01`;

const monthName = (text) => MONTHS[Number(text.slice(5, 7)) - 1];

/** "November 2026" */
export const monthTitle = (text) => `${monthName(text)} ${text.slice(0, 4)}`;

/** "Today", "Tomorrow", "Yesterday", else "Fri, Jun 13", with the year when it is another one. */
export function shortDate(text, now = today()) {
  const distance = dayNumber(text) - dayNumber(now);
  if (distance === 0) return 'Today';
  if (distance === 1) return 'Tomorrow';
  if (distance === -1) return 'Yesterday';
  const plain = `${WEEKDAYS[weekday(text)].slice(0, 3)}, ${monthName(text).slice(0, 3)} ${Number(text.slice(8))}`;
  return text.slice(0, 4) === now.slice(0, 4) ? plain : `${plain}, ${text.slice(0, 4)}`;
}

/** "Saturday, November 21, 2026": for screen readers and titles. */
export const longDate = (text) =>
  `${WEEKDAYS[weekday(text)]}, ${monthName(text)} ${Number(text.slice(8))}, ${text.slice(0, 4)}`;

/** "Saturday, November 21" */
export const dayTitle = (text) => longDate(text).slice(0, -6);

/** "17:30" -> "5:30 PM" */
export function clockTime(time) {
  const [hour, minute] = time.split(':').map(Number);
  const suffix = hour < 12 ? 'AM' : 'PM';
  return minute === 0 ? `${hour % 12 || 12} ${suffix}` : `${hour % 12 || 12}:${pad(minute)} ${suffix}`;
}

/** Reads "9", "9am", "9:30 pm", "17:30". @returns {string|null} "HH:MM" or null */
export function parseTime(text) {
  const match = /^\s*(\d{1,2})(?:[:.](\d{2}))?\s*([ap])?\.?(?:m\.?)?\s*$/i.exec(text);
  if (!match) return null;
  let hour = Number(match[1]);
  const minute = Number(match[2] ?? 0);
  if (match[3]) {
    if (hour < 1 || hour > 12) return null;
    hour = (hour % 12) + (match[3].toLowerCase() === 'p' ? 12 : 0);
  }
  return hour <= 23 && minute <= 59 ? `${pad(hour)}:${pad(minute)}` : null;
}

/** "3 min ago", "2 h ago", then the day. @param {number} at milliseconds since 1970 */
export function ago(at, now = Date.now()) {
  const minutes = Math.floor((now - at) / 60_000);
  if (minutes < 1) return 'just now';
  if (minutes < 60) return `${minutes} min ago`;
  if (minutes < 24 * 60 && today(new Date(at)) === today(new Date(now))) return `${Math.floor(minutes / 60)} h ago`;
  return shortDate(today(new Date(at)), today(new Date(now)));
}

/** Full moment for titles. @param {number} at milliseconds since 1970 */
export function moment(at) {
  const date = new Date(at);
  return `${longDate(today(date))}, ${clockTime(`${pad(date.getHours())}:${pad(date.getMinutes())}`)}`;
}

/** Running time "0:42", "12:05", "1:02:09". @param {number} milliseconds */
export function stopwatch(milliseconds) {
  const seconds = Math.max(0, Math.floor(milliseconds / 1000));
  const rest = `${pad(Math.floor(seconds / 60) % 60)}:${pad(seconds % 60)}`;
  return seconds < 3600 ? rest.replace(/^0/, '') : `${Math.floor(seconds / 3600)}:${rest}`;
}

/** "45 min", "1 h", "1 h 30 min". @param {number} minutes */
export function duration(minutes) {
  const whole = Math.max(0, Math.round(minutes));
  const hours = Math.floor(whole / 60);
  if (hours === 0) return `${whole} min`;
  return whole % 60 === 0 ? `${hours} h` : `${hours} h ${whole % 60} min`;
}

export const weekdayNames = WEEKDAYS;
