"""Checks OTIO files against the published schemas, as far as we write them: every object has all
members of its schema, of the right types; times are finite doubles with a positive rate; no two
transitions stand side by side, none is longer than what lies beside it.

    otio_schema.py FILE..."""
import json
import math
import sys

ITEM = {"name": str, "metadata": dict, "source_range": (dict, type(None)), "effects": list,
        "markers": list, "enabled": bool}
SCHEMAS = {
    "Timeline.1": {"name": str, "metadata": dict, "global_start_time": (dict, type(None)),
                   "tracks": dict},
    "Stack.1": {**ITEM, "children": list},
    "Track.1": {**ITEM, "children": list, "kind": str},
    "Clip.2": {**ITEM, "media_references": dict, "active_media_reference_key": str},
    "Gap.1": ITEM,
    "Transition.1": {"name": str, "metadata": dict, "transition_type": str, "in_offset": dict,
                     "out_offset": dict},
    "Marker.2": {"name": str, "metadata": dict, "color": (str, type(None)), "comment": str,
                 "marked_range": dict},
    "TimeRange.1": {"start_time": dict, "duration": dict},
    "RationalTime.1": {"value": (float, int), "rate": (float, int)},
}


def seconds(time):
    return time["value"] / time["rate"]


def check_track(children, fail):
    for before, after in zip([None] + children, children + [None]):
        kinds = [c and c["OTIO_SCHEMA"] for c in (before, after)]
        if kinds == ["Transition.1"] * 2:
            fail("two transitions side by side")
        for transition, other, offset in ((before, after, "out_offset"),
                                          (after, before, "in_offset")):
            if transition and transition["OTIO_SCHEMA"] == "Transition.1" and other \
                    and other.get("source_range"):
                length = seconds(other["source_range"]["duration"])
                if seconds(transition[offset]) > length + 1e-9:
                    fail("a transition longer than its neighbour")


def check(value, path, fail):
    if isinstance(value, list):
        for index, entry in enumerate(value):
            check(entry, f"{path}[{index}]", fail)
    if not isinstance(value, dict):
        return
    schema = value.get("OTIO_SCHEMA")
    for key, kinds in SCHEMAS.get(schema, {}).items():
        if not isinstance(value.get(key, fail), kinds):
            fail(f"{path}: {schema}: {key} is {value.get(key, 'missing')!r}")
    if schema == "RationalTime.1" and not (math.isfinite(value["value"]) and value["rate"] > 0):
        fail(f"{path}: no time")
    if schema == "Track.1":
        check_track(value["children"], fail)
    if schema == "Clip.2" and value["active_media_reference_key"] not in value["media_references"]:
        fail(f"{path}: the active reference is not there")
    for key, entry in value.items():
        if key not in ("metadata", "parameters"):
            check(entry, f"{path}.{key}", fail)


def main():
    failures = []
    for name in sys.argv[1:]:
        with open(name, encoding="utf-8") as file:
            root = json.load(file)
        if root.get("OTIO_SCHEMA") not in SCHEMAS:
            failures.append(f"{name}: the root is a {root.get('OTIO_SCHEMA')}")
        check(root, "", lambda text, name=name: failures.append(f"{name}: {text}"))
    for failure in failures[:20]:
        print(failure)
    return bool(failures)


sys.exit(main())
