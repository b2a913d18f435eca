"""Runs trw -report on a failing and on a clean project and judges the SARIF
logs with the SARIF multitool's validate verb and with the 2.1.0 schema it
ships: both must be valid, and each check message that the console shows must
be one result, in the same order, with its full text."""

import json
import os
import shutil
import subprocess
import sys
import tempfile

import jsonschema

trw, node, validator_dir, examples_dir = sys.argv[1:5]
multitool = os.path.join(validator_dir, "node_modules/@microsoft/sarif-multitool/bin.js")
schema_path = os.path.join(validator_dir, "node_modules/@microsoft/sarif-multitool-linux/sarif-2.1.0.json")
failures = []


def fail(text):
    failures.append(text)
    print("FAIL:", text)


def run(project, *extra):
    done = subprocess.run([trw, "-project", project, *extra], capture_output=True, text=True, timeout=300)
    return done.returncode, done.stdout


def console_messages(out):
    """The non-empty lines between the start and the end of the check."""
    lines = out.split("\n")
    start = lines.index("Check of model consistency started") + 1
    end = next(i for i in range(start, len(lines))
               if lines[i].startswith("ABORT - Check of model") or lines[i] == "Check of model consistency finished.")
    return [line for line in lines[start:end] if line]


def is_subsequence(part, whole):
    chars = iter(whole)
    return all(c in chars for c in part)


def validate(path):
    with open(schema_path) as f:
        schema = json.load(f)
    with open(path) as f:
        log = json.load(f)
    validator = jsonschema.validators.validator_for(schema)
    for error in validator(schema, format_checker=validator.FORMAT_CHECKER).iter_errors(log):
        fail(f"{path}: schema: {error.message}")
    verdict = path + ".validation.sarif"
    subprocess.run([node, multitool, "validate", path, "-o", verdict], capture_output=True, timeout=300, check=True)
    with open(verdict) as f:
        judged = json.load(f)["runs"][0]
    defaults = {rule["id"]: rule.get("defaultConfiguration", {}).get("level", "warning")
                for rule in judged["tool"]["driver"].get("rules", [])}
    for result in judged.get("results", []):
        if result.get("level", defaults.get(result["ruleId"])) == "error":
            fail(f"{path}: multitool {result['ruleId']}: {result['message']}")
    return log["runs"][0]


def check_run(project, expected_code, expected_levels):
    report = project + ".sarif"
    code, out = run(project, "-report", report)
    if code != expected_code:
        fail(f"{project}: exit code {code}, expected {expected_code}")
    sarif = validate(report)
    results = sarif["results"]
    texts = [r["message"]["text"] for r in results]
    shown = console_messages(out)
    if len(shown) != len(texts):
        fail(f"{project}: console shows {len(shown)} check messages, the report has {len(texts)} results")
    for line, text in zip(shown, texts):
        if "<" in text or not is_subsequence(line, text):
            fail(f"{project}: console {line!r} is not the report's {text!r}")
    levels = {r["level"] for r in results}
    if not expected_levels <= levels:
        fail(f"{project}: levels {sorted(levels)}, expected at least {sorted(expected_levels)}")
    invocation = sarif["invocations"][0]
    if invocation["exitCode"] != expected_code or sarif["tool"]["driver"]["name"] != "trw":
        fail(f"{project}: invocation {invocation}")
    return results


with tempfile.TemporaryDirectory() as work:
    clean = os.path.join(work, "valve.trwt")
    shutil.copy(os.path.join(examples_dir, "valve_controller_canopen_j1939/valve_controller_canopen_j1939.trwt"), clean)
    check_run(clean, 0, {"none"})

    # The example with faults that give every class of message, and a second line without a type.
    with open(os.path.join(examples_dir, "cia401_io_module/cia401_io_module.trwt")) as f:
        text = f.read()
    for old, new in [("co_timer_interval=1000\n", "co_timer_interval=\nadditional_cob_count=1,x\n"),
                     ("[MiscSettings]\n", "[MiscSettings]\nPreviousToolVersion=3.8.1\n"),
                     ("[Nodes]\n", "[Nodes]\n1\\name=Spare\n"),
                     ("0x6000\\0x0\\implementation=1\n", "0x6000\\0x0\\implementation=0\n"),
                     ("0x6000\\0x0\\defaultvalue=1\n", "0x6000\\0x0\\defaultvalue=3\n"),
                     ("0x6000\\0x1\\limitineds=0\n", "0x6000\\0x1\\limitineds=1\n")]:
        assert old in text, old
        text = text.replace(old, new, 1)
    failing = os.path.join(work, "faulty.trwt")
    with open(failing, "w") as f:
        f.write(text)
    results = check_run(failing, 7, {"error", "warning", "note", "none"})
    # The console's markup filter eats the head of this one; the report keeps it, with its place.
    corrected = "Corrected: Object 0x6000-0:'Managed Const' is used as implementation type for this subindex."
    if not any(r["message"]["text"] == corrected and
               r["locations"][0]["logicalLocations"][0]["fullyQualifiedName"] == "line0/0x6000/0"
               for r in results):
        fail(f"no result {corrected!r} at line0/0x6000/0")

    # A run that ends before the check still leaves a valid log, which says why.
    missing = os.path.join(work, "missing.trwt")
    code, out = run(missing, "-report", missing + ".sarif")
    invocation = validate(missing + ".sarif")["invocations"][0]
    notes = [n["message"]["text"] for n in invocation.get("toolExecutionNotifications", [])]
    if code != 3 or invocation["executionSuccessful"] or notes != ["Open project failed."]:
        fail(f"failed open: exit code {code}, invocation {invocation}")

    # A report that cannot be written is told before the last line; the exit code stays.
    unwritable = os.path.join(work, "no/such/folder/report.sarif")
    code, out = run(failing, "-report", unwritable)
    lines = out.rstrip("\n").split("\n")
    if code != 7 or lines[-1] != "Error - Check of model consistency returns error." or \
            not lines[-2].startswith(f"The report {unwritable} cannot be written: "):
        fail(f"unwritable report: exit code {code}, last lines {lines[-2:]}")

sys.exit(1 if failures else 0)
