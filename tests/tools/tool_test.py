#!/usr/bin/python3
"""End-to-end tests of the palvet command-line tool on real files.

    tool_test.py TOOL [EMULATOR...]

Pictures are checked with an independent reader (Pillow), character-set
output against the system's iconv command, checksums against values computed
here.
"""
import os
import pty
import shutil
import subprocess
import sys
import tempfile
import unittest
import zlib

from PIL import Image

TOOL = sys.argv[1]
EMULATOR = sys.argv[2:]
del sys.argv[1:]


def run(*args, input=None, env=None, cwd=None):
    return subprocess.run(EMULATOR + [TOOL] + [str(a) for a in args], input=input, capture_output=True,
                          env=env, cwd=cwd, timeout=300)


def library_crc32(data):
    # The library's CRC-32: the reflected polynomial with the register started
    # at 0xABCDABCD and the digest inverted. zlib inverts on the way in and
    # out, so hand it the inverted start register.
    return zlib.crc32(data, 0xABCDABCD ^ 0xFFFFFFFF)


def engine_available():
    """True when the tool can open a character-set engine here."""
    r = run("charset", "s2t", "x")
    return r.returncode == 0


class ToolTest(unittest.TestCase):
    def setUp(self):
        self.dir = tempfile.mkdtemp(prefix="palvet-tool-")

    def tearDown(self):
        shutil.rmtree(self.dir, ignore_errors=True)

    def path(self, name):
        return os.path.join(self.dir, name)

    def ok(self, *args, **kw):
        r = run(*args, **kw)
        self.assertEqual(r.returncode, 0, f"{args}: {r.stderr.decode(errors='replace')}")
        return r.stdout.decode("utf-8", errors="replace")

    def picture(self, w, h):
        img = Image.new("RGB", (w, h))
        # 2x2 blocks of one colour, so 4:2:0 chroma loses nothing.
        img.putdata([((x // 2 * 37) % 256, (y // 2 * 53) % 256, ((x // 2 + y // 2) * 11) % 256)
                     for y in range(h) for x in range(w)])
        return img

    def assertClose(self, a, b, tolerance):
        self.assertEqual(a.size, b.size)
        worst = max(abs(p - q) for pa, pb in zip(a.getdata(), b.getdata()) for p, q in zip(pa, pb))
        self.assertLessEqual(worst, tolerance)

    def test_image_round_trips_through_every_raw_format(self):
        src = self.path("in.bmp")
        original = self.picture(36, 20)
        original.save(src)
        self.assertIn("36x20, 24 bits per pixel", self.ok("image", "info", src))
        # Exact formats come back exactly; YUV ones within the rounding of
        # two table conversions; 5-6-5 within its lost low bits.
        for fmt, tolerance in [("rgb24", 0), ("argb", 0), ("rgb565", 7), ("i420", 8), ("nv12", 8),
                               ("nv21", 8), ("yuy2", 8), ("uyvy", 8)]:
            with self.subTest(fmt=fmt):
                raw = self.path("frame." + fmt)
                self.ok("image", "convert", src, raw)
                back = self.path(fmt + ".bmp")
                self.ok("image", "convert", "--size", "36x20", raw, back)
                self.assertClose(original, Image.open(back).convert("RGB"), tolerance)

    def test_image_rotate_and_fit(self):
        src = self.path("in.bmp")
        original = self.picture(8, 4)
        original.save(src)
        out = self.path("rot.bmp")
        self.ok("image", "convert", "--rotate", "90", src, out)
        rotated = Image.open(out).convert("RGB")
        self.assertEqual(rotated.size, (4, 8))
        # Clockwise: the top-left pixel moves to the top-right corner.
        self.assertEqual(rotated.getpixel((3, 0)), original.getpixel((0, 0)))
        self.ok("image", "convert", "--resize", "16x16", "--fit", "contain", "--background", "ff0000ff", src, out)
        fitted = Image.open(out).convert("RGB")
        self.assertEqual(fitted.size, (16, 16))
        self.assertEqual(fitted.getpixel((0, 0)), (0, 0, 255))          # letterbox band
        self.assertEqual(fitted.getpixel((0, 4)), original.getpixel((0, 0)))  # picture doubled

    def test_bad_usage_and_failures_leave_no_output(self):
        out = self.path("out.bmp")
        r = run("image", "convert", self.path("missing.bmp"), out)
        self.assertEqual(r.returncode, 1)
        self.assertIn(b"missing.bmp", r.stderr)
        raw = self.path("short.i420")
        with open(raw, "wb") as f:
            f.write(b"\0" * 10)
        r = run("image", "convert", "--size", "4x4", raw, out)
        self.assertEqual(r.returncode, 1)
        self.assertIn(b"short.i420", r.stderr)
        self.assertEqual(run("image", "convert", raw, out).returncode, 2)  # no --size
        self.assertEqual(run("image", "convert", "--size", "4by4", raw, out).returncode, 2)
        self.assertEqual(run("image", "--bogus").returncode, 2)
        self.assertEqual(run("no-such-command").returncode, 2)
        self.assertIn("palvet ", self.ok("--version"))
        self.assertIn("Subcommands", self.ok("--help"))
        self.assertIn("--size", self.ok("image", "convert", "--help"))
        self.assertEqual(run("number-zh", "-5").returncode, 2)
        self.assertEqual(sorted(os.listdir(self.dir)), ["short.i420"])

    def test_checksums(self):
        data = bytes(range(256)) * 5000 + b"tail"
        f = self.path("data.bin")
        with open(f, "wb") as fh:
            fh.write(data)
        self.assertEqual(self.ok("crc32", f), f"{library_crc32(data)} {len(data)} {f}\n")
        # CRC-16/XMODEM: polynomial 0x1021, start 0, no final XOR.
        reg = 0
        for b in data:
            reg ^= b << 8
            for _ in range(8):
                reg = ((reg << 1) ^ 0x1021) & 0xFFFF if reg & 0x8000 else (reg << 1) & 0xFFFF
        self.assertEqual(self.ok("crc16", f).split()[0], str(reg))

    def test_text_commands(self):
        self.assertEqual(self.ok("url", "encode", "a b/c~"), "a+b%2Fc%7E\n")
        self.assertEqual(self.ok("url", "decode", "a+b%2Fc"), "a b/c\n")
        self.assertEqual(self.ok("split", "a,,b"), "a\n\nb\n")
        self.assertEqual(self.ok("split", "--skip-empty", "a,,b"), "a\nb\n")
        self.assertEqual(self.ok("split", "-s", ";", "-s", ";;", "k=v;;x=y"), "k=v\nx=y\n")
        self.assertEqual(self.ok("number-zh", "12345678"), "一千二百三十四万五千六百七十八\n")
        out = self.path("bytes")
        self.ok("hex", "parse", "-o", out, "0x0a0B ff")
        with open(out, "rb") as fh:
            self.assertEqual(fh.read(), b"\x0a\x0b\xff")
        self.assertEqual(self.ok("hex", "dump", "--plain", out), "0a0bff\n")

    def test_files_and_config(self):
        tree = self.path("tree")
        os.makedirs(os.path.join(tree, "sub"))
        for name in ["a.bmp", "b.jpg", "c.BMP", "sub/d.bmp", ".hidden.bmp"]:
            open(os.path.join(tree, name), "w").close()
        self.assertEqual(sorted(self.ok("ls", tree, "--ext", ".bmp;.jpg").split()), ["a.bmp", "b.jpg"])
        self.assertEqual(sorted(self.ok("ls", "-r", tree, "--ext", ".bmp").split()), ["a.bmp", "sub/d.bmp"])
        self.assertEqual(self.ok("find", tree, "d.bmp").strip(), os.path.join(tree, "sub", "d.bmp"))
        self.assertEqual(run("find", tree, "nothing").returncode, 1)

        conf = self.path("box.conf")
        with open(conf, "wb") as fh:
            fh.write(b"# settings\r\nName=box\r\nVolume=30\r\n")
        self.assertEqual(self.ok("config", "get", conf, "volume="), "30\n")
        self.ok("config", "set", conf, "Volume=", "40")
        self.ok("config", "set", conf, "Mute=", "1")
        with open(conf, "rb") as fh:
            self.assertEqual(fh.read(), b"# settings\r\nName=box\r\nVolume=40\r\nMute=1\n")
        self.assertEqual(run("config", "get", conf, "Missing=").returncode, 1)

        self.ok("mkdir", "-p", self.path("x/y/z"))
        self.assertTrue(os.path.isdir(self.path("x/y/z")))
        self.ok("rm", "-r", "--folders", self.path("x"))
        self.assertEqual(os.listdir(self.path("x")), [])

    def test_copy_shows_progress_on_a_terminal(self):
        src, dst = self.path("big.bin"), self.path("copy.bin")
        data = os.urandom(5 * 512 * 1024)  # 2.5 MiB: chunks at 1, 2 and 2.5 MiB
        with open(src, "wb") as fh:
            fh.write(data)
        master, slave = pty.openpty()
        proc = subprocess.Popen(EMULATOR + [TOOL, "cp", src, dst], stdout=subprocess.PIPE, stderr=slave)
        os.close(slave)
        progress = b""
        while True:
            try:
                chunk = os.read(master, 4096)
            except OSError:
                break
            if not chunk:
                break
            progress += chunk
        os.close(master)
        self.assertEqual(proc.wait(timeout=120), 0)
        with open(dst, "rb") as fh:
            self.assertEqual(fh.read(), data)
        text = progress.decode(errors="replace")
        for percent in ["0%", "40%", "80%", "100%"]:
            self.assertIn(percent, text)
        # Not a terminal: no bar at all.
        r = run("cp", src, self.path("copy2.bin"))
        self.assertEqual((r.returncode, r.stderr), (0, b""))
        self.assertEqual(run("cp", self.path("none"), dst).returncode, 1)

    def test_charset_matches_iconv(self):
        if not engine_available():
            self.skipTest("no libicuuc.so or libiconv.so for this architecture")
        # Characters both GB2312 and Big5 hold, so that no converter has to
        # substitute.
        text = "中文天地人口大小山水。\nASCII line\n"
        gb = self.path("gb.txt")
        with open(gb, "wb") as fh:
            fh.write(text.encode("gb2312"))
        for to, name in [("utf-8", "UTF-8"), ("big5", "BIG5"), ("utf-32", "UTF-32LE"), ("gbk", "GBK")]:
            with self.subTest(to=to):
                out = self.path("out." + to)
                self.ok("charset", "convert", "--from", "gb2312", "--to", to, gb, out)
                expected = subprocess.run(["iconv", "-f", "GB2312", "-t", name, gb], capture_output=True,
                                          check=True).stdout
                with open(out, "rb") as fh:
                    self.assertEqual(fh.read(), expected)
        # A missing source or an unknown set: a message, and no output file.
        r = run("charset", "convert", "--from", "gb2312", "--to", "utf-8", self.path("none.txt"), self.path("out"))
        self.assertEqual(r.returncode, 1)
        self.assertIn(b"none.txt", r.stderr)
        r = run("charset", "convert", "--from", "latin1", "--to", "utf-8", gb, self.path("out"))
        self.assertEqual(r.returncode, 2)
        self.assertFalse(os.path.exists(self.path("out")))
        self.assertEqual(self.ok("charset", "s2t", "简体中文"), "簡體中文\n")

    def test_demo_writes_a_contact_sheet(self):
        env = dict(os.environ, TMPDIR=self.dir)
        out = self.ok("demo", env=env)
        sheet = os.path.join(self.dir, "palvet-demo", "contact-sheet.bmp")
        self.assertIn("contact sheet: " + os.path.realpath(sheet), out)
        with Image.open(sheet) as img:
            self.assertEqual(img.size, (1280, 720))
        self.assertRegex(out, r"listed 6 picture\(s\)")
        # The text file is not a picture and never reaches the sheet.
        self.assertNotIn(".txt", out.split("loaded")[0].split("listed")[1])


if __name__ == "__main__":
    unittest.main(verbosity=2)
