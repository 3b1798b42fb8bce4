"""Keeps the walls of the house, by reading the includes:

- everything under tavrolin/ includes the standard library and tavrolin/ only;
- a room of the library includes only what ROOMS names for it, so foundation, platform and ui
  know nothing of notifications;
- no source unit (a header and its .cpp) reaches itself through others;
- adapters include foundation, platform and their own folder; the device includes adapters and rooms; only
  the apps include the device.

usage: walls.py ROOT"""

import sys

from source_tree import SourceTree, complain

# The arrows between the library's rooms: to a whole room, or to the one unit of it that the work names. A
# new arrow is a decision: think before you add one.
ROOMS = {
    "foundation": set(),
    "platform": {"foundation"},
    "ui": {"foundation", "platform"},
    "core": {"foundation", "platform", "payload", "events/event_vocabulary", "store/core_data_controller",
             "store/notification_persistence_service", "service_extension/push_file_utility",
             "actions/notification_category_helper", "actions/local_notification_scheduler",
             "actions/notification_helper", "events/notification_response_service", "ui/label"},
    "payload": {"foundation", "platform", "core", "events/date_utility", "service_extension/push_file_utility"},
    "events": {"foundation", "platform", "core", "payload", "store", "actions"},
    "store": {"foundation", "platform", "core", "payload", "events/date_utility", "events/event_vocabulary"},
    "network": {"foundation", "platform", "core", "service_extension/push_media_operation"},
    "service_extension": {"foundation", "platform", "core", "payload", "events", "store", "network",
                          "actions/notification_categories"},
    "actions": {"foundation", "platform", "core", "payload", "events", "store", "service_extension"},
    "content_ui": {"foundation", "platform", "ui", "core", "payload", "events", "actions",
                   "service_extension/gif_image_utility", "service_extension/push_operation"},
}
ADAPTERS_MAY = {"foundation", "platform"}


def room_of(file):
    parts = file.split("/")
    return parts[1] if parts[0] == "tavrolin" and len(parts) > 2 else None


def unit_of(file):
    return file.rsplit(".", 1)[0]


def objection(tree, file, text, quoted):
    """Why the file may not include that, or None."""
    top, folder, room = file.split("/")[0], file.rsplit("/", 1)[0], room_of(file)
    target_top, target_room = text.split("/")[0], room_of(text)
    if top == "tavrolin":
        if quoted and target_top != "tavrolin":
            return 'the library includes its own headers as "tavrolin/…" only'
        if not quoted and ("/" in text or "." in text):
            return "the library includes the standard library and itself only"
        allowed = ROOMS.get(room, set()) | {room}
        if quoted and target_room not in allowed and unit_of(text).removeprefix("tavrolin/") not in allowed:
            return f"no arrow leads from {room} to {target_room}"
    if top == "adapters" and quoted:
        if target_room not in ADAPTERS_MAY if target_top == "tavrolin" else text.rsplit("/", 1)[0] != folder:
            return "an adapter includes foundation, platform and its own folder only"
    if top == "device" and target_top == "apps":
        return "the device knows no app"
    if quoted and not (tree.root / text).is_file():
        return "there is no such file, seen from the root of the tree"
    return None


def include_problems(tree):
    for file in tree.files():
        for text, quoted, line in tree.includes(file):
            why = objection(tree, file, text, quoted)
            if why:
                yield f"{file}:{line}: includes {text}: {why}"


def cycle_problems(tree):
    arrows = {}
    for file in tree.files():
        reached = {unit_of(other) for other in tree.own_includes(file)} - {unit_of(file)}
        arrows.setdefault(unit_of(file), set()).update(reached)

    done, path = set(), []

    def walk(unit):
        if unit in path:
            yield "units that reach themselves: " + " -> ".join(path[path.index(unit):] + [unit])
        elif unit not in done:
            path.append(unit)
            for other in sorted(arrows.get(unit, ())):
                yield from walk(other)
            path.pop()
            done.add(unit)

    for unit in sorted(arrows):
        yield from walk(unit)


def problems(root):
    tree = SourceTree(root)
    return [*include_problems(tree), *cycle_problems(tree)]


if __name__ == "__main__":
    sys.exit(complain(problems(sys.argv[1]), "walls"))
