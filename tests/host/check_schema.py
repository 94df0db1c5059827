"""check_schema.py: whether the schema of the application file and the host agree.

Usage: check_schema.py SCHEMA CORPUS GOOD...

The schema is itself valid. It accepts every GOOD file. In the folder CORPUS each NAME.json is faulty, and NAME.txt has
the host's diagnostics; what its name begins with says how far the schema must notice:
  syntax_     no JSON: a strict reader refuses it
  duplicate_  a member twice in an object: a strict reader refuses it
  shape_      the schema reports a fault at each place that the host reports
  meaning_    JSON whose parts do not go together, which a schema need not notice
"""

import json
import pathlib
import re
import sys

import jsonschema


def no_duplicates(pairs):
    members = dict(pairs)
    if len(members) != len(pairs):
        raise ValueError("a member stands twice in one object")
    return members


def finite(text):
    number = float(text)
    if number in (float("inf"), float("-inf")):
        raise ValueError(f"{text} is too large")
    return number


def no_constant(text):
    raise ValueError(f"{text} is no JSON")


def load(path):
    """Reads JSON as strictly as the host."""
    text = path.read_bytes().decode("utf-8-sig")
    value = json.loads(text, object_pairs_hook=no_duplicates, parse_float=finite, parse_constant=no_constant)
    json.dumps(value, ensure_ascii=False).encode("utf-8")  # fails for half of a surrogate pair
    return value


def refusal(path):
    """Why the file is not strict JSON; None when it is."""
    try:
        load(path)
    except ValueError as fault:
        return str(fault)
    return None


def all_errors(errors):
    """The errors and those they are made of."""
    for error in errors:
        yield error
        yield from all_errors(error.context)


def enclosing(path):
    """$.layers[0].x -> $.layers[0]; $.size["a-b"] -> $.size"""
    return re.sub(r"(\.[^.\[\]]+|\[[^\[\]]*\])$", "", path)


def is_noticed(place, message, noticed):
    # A schema reports what an object lacks, or has too much, at the object.
    about_members = message.startswith(("missing member", "unknown member"))
    return (enclosing(place) if about_members else place) in noticed


def check_shape(validator, path):
    """What the host reports and the schema does not."""
    noticed = {error.json_path for error in all_errors(validator.iter_errors(load(path)))}
    reported = re.findall(r"^app\.json: (\$\S*): (.*)$", path.with_suffix(".txt").read_text("utf-8"), re.MULTILINE)
    if not reported:
        return ["the host's diagnostics name no path"]
    return [f"the schema does not notice {place}" for place, message in reported
            if not is_noticed(place, message, noticed)]


def check_faulty(validator, path):
    kind = path.name.split("_")[0]
    if kind in ("syntax", "duplicate"):
        return [] if refusal(path) else ["a strict reader accepts it"]
    if kind not in ("shape", "meaning"):
        return ["its name begins with none of syntax_, duplicate_, shape_, meaning_"]
    if refusal(path):
        return [f"a strict reader refuses it: {refusal(path)}"]
    return check_shape(validator, path) if kind == "shape" else []


def check_good(validator, path):
    return [f"{error.json_path}: {error.message}" for error in validator.iter_errors(load(path))]


def main(arguments):
    if len(arguments) < 3:
        sys.exit(__doc__)
    schema = json.loads(pathlib.Path(arguments[0]).read_text("utf-8"))
    jsonschema.Draft7Validator.check_schema(schema)
    validator = jsonschema.Draft7Validator(schema)
    corpus = sorted(pathlib.Path(arguments[1]).glob("*.json"))
    for kind in ("syntax", "duplicate", "shape", "meaning"):
        if not any(path.name.startswith(kind + "_") for path in corpus):
            sys.exit(f"{arguments[1]}: no {kind}_*.json to check")
    found = [(path, fault) for path in corpus for fault in check_faulty(validator, path)]
    good = [pathlib.Path(argument) for argument in arguments[2:]]
    found += [(path, fault) for path in good for fault in check_good(validator, path)]
    for path, fault in found:
        print(f"{path}: {fault}")
    print(f"{len(corpus)} faulty and {len(good)} good files checked, {len(found)} disagreements")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
