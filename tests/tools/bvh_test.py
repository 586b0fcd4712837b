"""Motion capture: the graph that new-graph writes places joints where NumPy does, in whatever order the channels come.

usage: bvh_test.py NODUS
"""
import os
import subprocess
import sys
import tempfile

import numpy as np

NODUS = os.path.abspath(sys.argv[1])
FRAMES = 40
ROTATIONS = {
    "X": lambda a: [[1, 0, 0], [0, np.cos(a), -np.sin(a)], [0, np.sin(a), np.cos(a)]],
    "Y": lambda a: [[np.cos(a), 0, np.sin(a)], [0, 1, 0], [-np.sin(a), 0, np.cos(a)]],
    "Z": lambda a: [[np.cos(a), -np.sin(a), 0], [np.sin(a), np.cos(a), 0], [0, 0, 1]],
}
PLACE = "Xposition Yposition Zposition "
# A joint: name, parent, offset, channels; an end site has no channels and no name.
SKELETONS = [
    [("Hips", None, (0, 90, 0), PLACE + "Zrotation Xrotation Yrotation"),
     ("Spine.1", 0, (0, 20.5, -1), "Zrotation Xrotation Yrotation"),
     ("Arm", 1, (15, 10, 0), "Zrotation Xrotation Yrotation"),
     (None, 2, (30, 0, 1e-1), ""),
     ("Leg", 0, (8, -5, 0), "Zrotation Xrotation Yrotation"),
     (None, 4, (0, -40, 3), "")],
    [("root", None, (1, 2, 3), "Zposition Xposition Yposition Xrotation Yrotation Zrotation"),
     ("a:b", 0, (0, 10, 0), "Yrotation Zrotation Xrotation"),
     ("c", 1, (0, 10, 0), "Zrotation Yrotation Xrotation"),
     (None, 2, (0, 5, 0), ""),
     (None, 2, (0, 6, 1), "")],
    [("r", None, (0, 0, 0), PLACE + "Yrotation Xrotation Zrotation"),
     ("hinge", 0, (4, 0, 0), "Yrotation"),
     ("slide", 1, (3, 0, 0), "Xposition Zrotation Xrotation"),
     ("stiff", 2, (2, 1, 0), ""),
     (None, 3, (1, 0, 0), "")],
]


def hierarchy(joints, index, depth=0):
    name, parent, offset, channels = joints[index]
    margin = "\t" * depth
    head = "End Site" if name is None else ("ROOT " if parent is None else "JOINT ") + name
    text = f"{margin}{head}\n{margin}{{\n{margin}\tOFFSET {offset[0]} {offset[1]} {offset[2]}\n"
    if name is not None:
        text += f"{margin}\tCHANNELS {len(channels.split())} {channels}\n"
    for child, joint in enumerate(joints):
        if joint[1] == index:
            text += hierarchy(joints, child, depth + 1)
    return text + margin + "}\n"


def positions(joints, motion):
    """Where each joint is in each frame, by matrices in double."""
    places = np.zeros((len(motion), len(joints), 3))
    for frame, values in enumerate(motion):
        left = list(values)
        world = []
        for name, parent, offset, channels in joints:
            move, turn = np.array(offset, float), np.eye(3)
            for channel in channels.split():
                value = left.pop(0)
                if channel.endswith("position"):
                    move["XYZ".index(channel[0])] += value
                else:
                    turn = turn @ np.array(ROTATIONS[channel[0]](np.radians(value)))
            outer = (np.zeros(3), np.eye(3)) if parent is None else world[parent]
            world.append((outer[0] + outer[1] @ move, outer[1] @ turn))
            places[frame, len(world) - 1] = world[-1][0]
    return places


def run(*arguments):
    done = subprocess.run([NODUS, *arguments], capture_output=True, text=True, check=False)
    return done.returncode, done.stdout, done.stderr


def expect(what, expected, got):
    if expected != got:
        sys.exit(f"{what}: expected {expected!r}, got {got!r}")


def places_joints(joints, number):
    count = sum(len(joint[3].split()) for joint in joints)
    motion = np.random.default_rng(number).uniform(-170, 170, (FRAMES, count)).round(3)
    text = "HIERARCHY\n" + hierarchy(joints, 0) + f"MOTION\nFrames: {FRAMES}\nFrame Time: 0.0333\n"
    text += "".join(" ".join(map(str, row)) + " \r\n" for row in motion)
    with open("m.bvh", "w", encoding="utf-8", newline="") as file:
        file.write(text)
    expect("new-graph", (0, "", ""), run("new-graph", "--from", "m.bvh", "-o", "m.json"))
    expect("eval", (0, "", ""), run("eval", "m.json", "--data", "m.bvh", "--out", "m.npy"))
    result = np.load("m.npy")
    wanted = positions(joints, motion)
    # Lanes: x of a joint's t, or of an end site's position.
    columns = [name[:-2] for name in result.dtype.names if name.endswith((".t.x", "result.x"))]
    expect("joints", len(joints), len(columns))
    got = np.stack([np.stack([result[c + lane] for lane in (".x", ".y", ".z")], -1) for c in columns], 1)
    # Rotations start from an estimate of 12 bits that is refined once.
    size = np.abs(wanted).max()
    expect(f"skeleton {number}", True, bool(np.abs(got - wanted).max() < 2e-5 * size))
    expect("some", (0, "", ""), run("eval", "m.json", "--data", "m.bvh", "--frames", "7:9", "--out", "s.npy"))
    expect("frames 7 to 9", result[7:10].tobytes(), np.load("s.npy").tobytes())
    return text


def refuses(text, change, expected):
    before, after = change
    expect(f"{before!r} is there", True, before in text)
    with open("m.bvh", "w", encoding="utf-8") as file:
        file.write(text.replace("\r", "").replace(before, after, 1))
    status, _, error = run("eval", "m.json", "--data", "m.bvh")
    expect(f"{before} -> {after}", (2, f"nodus: m.bvh{expected}\n"), (status, error))


def main():
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        for number, joints in enumerate(SKELETONS):
            text = places_joints(joints, number)
        row = text.replace("\r", "").splitlines()[-FRAMES]
        first = len(text.splitlines()) - FRAMES + 1
        refuses(text, ("HIERARCHY", "HIRARCHY"), ":1: wants 'HIERARCHY', not 'HIRARCHY'")
        refuses(text, ("OFFSET 4 0 0", "OFFSET 4 x 0"), ":8: 'OFFSET' wants a number, not 'x'")
        refuses(text, ("Yrotation\n", "Wrotation\n"),
                ":9: wants a channel, Xposition to Zposition or Xrotation to Zrotation, not 'Wrotation'")
        refuses(text, ("JOINT slide", "JOINT hinge"), ":10: two joints have the name 'hinge'")
        refuses(text, ("MOTION", ""), ":27: wants 'MOTION', or one more 'ROOT', not 'Frames:'")
        refuses(text, ("Frames: 40", "Frames: 41"), ": has 40 frames, its header says 41")
        refuses(text, ("Frames: 40", "Frames: 39"), f":{first + 39}: one more frame than the header says, 39")
        refuses(text, (row, row + "9"), f":{first}: {len(row.split()) + 1} fields, the header has {len(row.split())}")
        refuses(text, (row.split()[3], "zero"), f":{first}: column 'r.ry': 'zero' is not a number")


main()
