"""A private desktop session for tests and for looking at the program on a machine without a display."""
