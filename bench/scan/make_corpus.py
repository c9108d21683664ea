#!/usr/bin/python3
"""Writes the scan benchmark corpus: FILES files totalling about MB megabytes of
mixed content (incompressible binary, text, deflated zips, a few EICAR files and
clam.exe copies), in nested folders, reproducibly from a fixed random start."""
import io, os, random, sys, zipfile

out, files, megabytes = sys.argv[1], int(sys.argv[2]), int(sys.argv[3])
rng = random.Random(20240611)
mean = megabytes * 1024 * 1024 // files
eicar = b"X5O!P%@AP[4\\PZX54(P^)7CC)7}$EICAR-STANDARD-ANTIVIRUS-TEST-FILE!$H+H*"
clam = open("/usr/share/clamav-testfiles/clam.exe", "rb").read()
words = [b"alpha", b"bravo", b"charlie", b"delta", b"echo", b"foxtrot", b"golf", b"hotel", b"india", b"juliet"]

def size():
    # Log-normal-ish sizes around the mean, capped at 40x the mean.
    return max(16, min(int(rng.expovariate(1.0 / mean)), mean * 40))

def text(n):
    parts, total = [], 0
    while total < n:
        w = rng.choice(words)
        parts.append(w)
        total += len(w) + 1
    return b" ".join(parts)[:n]

total = 0
for i in range(files):
    folder = os.path.join(out, "d%02d" % (i % 37), "s%02d" % (i % 11))
    os.makedirs(folder, exist_ok=True)
    kind = rng.random()
    n = size()
    if i % 997 == 0:
        name, data = "f%05d.com" % i, eicar
    elif i % 1499 == 0:
        name, data = "f%05d.exe" % i, clam
    elif kind < 0.55:
        name, data = "f%05d.bin" % i, os.urandom(n)
    elif kind < 0.90:
        name, data = "f%05d.txt" % i, text(n)
    else:
        buf = io.BytesIO()
        with zipfile.ZipFile(buf, "w", zipfile.ZIP_DEFLATED) as z:
            for k in range(3):
                z.writestr("m%d.txt" % k, text(n // 3))
        name, data = "f%05d.zip" % i, buf.getvalue()
    with open(os.path.join(folder, name), "wb") as f:
        f.write(data)
    total += len(data)
print("corpus: %d files, %.1f MB in %s" % (files, total / 1048576.0, out))
