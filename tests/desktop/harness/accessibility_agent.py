"""Runs inside a session and answers accessibility.py's requests, one JSON object a line."""

import json
import sys

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

# Deep enough for any window of ours, shallow enough to end in a tree that lists itself.
_DEEPEST = 40

_kept = []


def _states(element):
    return [state.value_nick for state in element.get_state_set().get_states()]


def _children(element):
    for index in range(element.get_child_count()):
        child = element.get_child_at_index(index)
        if child is not None:
            yield child


def _programs(wanted):
    for program in _children(Atspi.get_desktop(0)):
        if wanted in (program.get_name() or ""):
            yield program


def _walk(element, visible_only, depth=0):
    """The element and what is below it. GTK 4.8 reports "showing" for windows alone, so visible means: all the way down."""
    if visible_only and depth > 0 and "visible" not in _states(element):
        return
    yield element, depth
    if depth < _DEEPEST:
        for child in _children(element):
            try:
                yield from _walk(child, visible_only, depth + 1)
            except GLib.Error:
                continue  # it went away while we were looking


def _text(element):
    interface = element.get_text_iface()
    if interface is None:
        return element.get_name() or ""
    # GTK 4.8 answers "to the end" (-1) with nothing; the count has to be asked for.
    return Atspi.Text.get_text(interface, 0, Atspi.Text.get_character_count(interface))


def find(application, role, name, contains, visible_only):
    found = []
    for program in _programs(application):
        for element, depth in _walk(program, visible_only):
            if depth == 0:
                continue
            element_name = element.get_name() or ""
            if ((role is None or element.get_role_name() == role) and (name is None or element_name == name)
                    and (contains is None or contains in element_name)):
                _kept.append(element)
                found.append({"handle": len(_kept) - 1, "role": element.get_role_name(), "name": element_name,
                              "description": element.get_description() or "", "states": _states(element)})
    return found


def text(handle):
    return _text(_kept[handle])


def set_text(handle, text):
    if not Atspi.EditableText.set_text_contents(_kept[handle].get_editable_text_iface(), text):
        raise LookupError("its text cannot be set")


def press(handle):
    if not Atspi.Action.do_action(_kept[handle].get_action_iface(), 0):
        raise LookupError("it has no action")


def focus(handle):
    if not Atspi.Component.grab_focus(_kept[handle].get_component_iface()):
        raise LookupError("it does not take the focus")


def extents(handle):
    area = Atspi.Component.get_extents(_kept[handle].get_component_iface(), Atspi.CoordType.WINDOW)
    return [area.x, area.y, area.width, area.height]


def ask_past_the_end(application):
    """Asks the program for a window that it does not have, as happens when one closes between two questions."""
    for program in _programs(application):
        program.get_child_at_index(1000)


def outline(application):
    lines = []
    for program in _programs(application):
        for element, depth in _walk(program, visible_only=True):
            notable = [state for state in _states(element) if state in ("focused", "checked", "selected", "active", "pressed")]
            lines.append("  " * depth + f"{element.get_role_name()} '{element.get_name()}' {' '.join(notable)}".rstrip())
    return "\n".join(lines)


_REQUESTS = {function.__name__: function for function in (find, text, set_text, press, focus, extents, ask_past_the_end, outline)}


def main():
    for line in sys.stdin:
        request = json.loads(line)
        # Old children would be answered from the cache otherwise.
        Atspi.get_desktop(0).clear_cache()
        while GLib.MainContext.default().iteration(False):
            pass
        try:
            answer = {"value": _REQUESTS[request.pop("request")](**request)}
        except (GLib.Error, LookupError, AttributeError, TypeError) as error:
            answer = {"error": str(error)}
        print(json.dumps(answer), flush=True)


if __name__ == "__main__":
    main()
