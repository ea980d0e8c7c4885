"""Makes outputs to report on: the examples, a run of many atlases, and outputs with damage."""

import os
import random
import re
import shutil
import struct
import subprocess


def write_tga(path, width, height, texel):
    """`texel(x, y)` gives blue, green, red, alpha; the top row comes first."""
    head = struct.pack("<BBBHHBHHHHBB", 0, 0, 2, 0, 0, 0, 0, 0, width, height, 32, 0x28)
    rows = bytes(part for y in range(height) for x in range(width) for part in texel(x, y))
    with open(path, "wb") as file:
        file.write(head + rows)


def sprite(rng):
    """A disc, a ring or a card in one colour, shaded, on a transparent ground."""
    colour = [rng.randrange(40, 256) for _ in range(3)]
    kind = rng.choice("drc")

    def texel(x, y, width, height):
        u, v = (2 * x + 1) / width - 1, (2 * y + 1) / height - 1
        distance = (u * u + v * v) ** 0.5
        inside = {"d": distance < 0.96, "r": 0.55 < distance < 0.96, "c": max(abs(u), abs(v)) < 0.9}[kind]
        shade = 0.65 - 0.35 * v
        return [int(part * shade) for part in colour] + [255 if inside else 0]

    return texel


def run_mosaicer(mosaicer, textures, definition, output):
    """Gives the whole percentages that the tool itself tells of its atlases, by their names."""
    shutil.rmtree(output, ignore_errors=True)
    told = subprocess.run([mosaicer, "-v", textures, definition, output], check=True, capture_output=True, text=True).stdout
    return {name: int(percent) for name, percent in re.findall(r"^Baked atlas (.*), (\d+)% used", told, re.MULTILINE)}


def make_examples(mosaicer, source_dir, output):
    examples = os.path.join(source_dir, "examples")
    return run_mosaicer(mosaicer, os.path.join(examples, "textures"), os.path.join(examples, "atlas_set.xml"), output)


def make_many(mosaicer, folder, output, count):
    """`count` atlases of about a dozen textures each, in folders, DDS with mip levels."""
    rng = random.Random(7)
    textures = os.path.join(folder, "textures")
    os.makedirs(textures, exist_ok=True)
    names = []
    for number in range(64):
        width, height = rng.choice((16, 24, 32, 48, 64)), rng.choice((16, 24, 32, 48, 64))
        names.append("sprite_%02d" % number)
        texel = sprite(rng)
        write_tga(os.path.join(textures, names[-1] + ".tga"), width, height, lambda x, y: texel(x, y, width, height))
    sets = []
    # Measuring padding has to do with exact texels and with compressed ones.
    formats = ("AF_A8R8G8B8", "AF_DXT5")
    for number in range(count):
        chosen = rng.sample(names, rng.randrange(6, 20))
        lines = "".join('<texture name="%s" rename_to="a%d_%s"/>' % (name, number, name) for name in chosen)
        sets.append('<atlas name="area%d/level%d" width="256" height="256" autosplit="true" pad_texels_u="2" pad_texels_v="2" '
                    'texel_format="%s" mip_filter="BOX" category="level">%s</atlas>'
                    % (number // 50, number, formats[number % 2], lines))
    definition = os.path.join(folder, "many.xml")
    with open(definition, "w", encoding="utf-8") as file:
        file.write('<texture_tree name="game">' + "\n".join(sets) + "</texture_tree>")
    return run_mosaicer(mosaicer, textures, definition, output)


HOSTILE_NAME = "</script><script>document.title='owned'</script>&amp; \u00fcml\u00e4ut \U0001f43b 'x' ${1} {{js}} \\"


def make_damaged(output):
    """A whole atlas with a hostile name, one whose image is cut off, one whose database is, a set that lacks an image."""

    def folder(name, database, text):
        os.makedirs(os.path.join(output, name))
        with open(os.path.join(output, name, database), "w", encoding="utf-8") as file:
            file.write(text)
        return os.path.join(output, name, "atlas.tga")

    def mapping(name):
        return ('<atlas_mapping texture="%s" groups="" u_off="0.25" v_off="0.75" u_scale="0.5" v_scale="0.5" rotation="0" '
                'tiled_u="false" tiled_v="false" orig_name="%s" orig_mip_filter="BOX" orig_forced_width="-1" '
                'orig_forced_height="-1" />' % (name, name))

    def whole(path):
        write_tga(path, 32, 32, lambda x, y: (8 * x, 8 * y, 128, 255))

    database = "tdb_atlas_set.xml"
    name = HOSTILE_NAME.replace("&amp;", "&amp;amp;").replace("<", "&lt;").replace("'", "&apos;")
    whole(folder("hostile", database, '<atlas_set name="hostile">%s</atlas_set>' % mapping(name)))
    cut = folder("cut_image", database, '<atlas_set name="cut_image">%s</atlas_set>' % mapping("a"))
    whole(cut)
    with open(cut, "r+b") as file:
        file.truncate(300)
    whole(folder("cut_database", database, '<atlas_set name="cut_database">%s<atlas_mapping text' % mapping("kept")))
    folder("lacking", "tdb_texture_set.xml", '<texture_set name="lacking"><image name="gone" /></texture_set>')
