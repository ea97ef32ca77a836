"""Compound files, and xlsx workbooks locked in one with a password; for the samples and seeds.

AES is the openssl program's. Salts and keys are made from the content, so that the same input gives the same file;
who has something to hide uses other programs.
"""
import base64
import hashlib
import hmac
import struct
import subprocess

END, FREE, TABLE = 0xFFFFFFFE, 0xFFFFFFFF, 0xFFFFFFFD
LIST = 0xFFFFFFFC
SECTOR, SMALL, SMALL_BELOW = 512, 64, 4096
IN_HEADER, IN_LIST = 109, SECTOR // 4 - 1


def padded(content, size, filling=b"\0"):
    return content + filling * (-len(content) % size)


def chain(first, count):
    return [*range(first + 1, first + count), END] if count else []


def entry(name, kind, right, child, start, size):
    text = name.encode("utf-16-le")
    return (text.ljust(64, b"\0") + struct.pack("<HBBIII", len(text) + 2, kind, 1, FREE, right, child)
            + bytes(36) + struct.pack("<IQ", start, size))


def compound_file(streams):
    """A compound file with the streams (names and contents) in its root storage."""
    table, data, small_table, small = [], b"", [], b""
    places = []

    def place(content):
        nonlocal table, data
        content = padded(content, SECTOR)
        start = len(table) if content else END
        table += chain(start, len(content) // SECTOR)
        data += content
        return start

    for content in streams.values():
        if len(content) >= SMALL_BELOW:
            places.append(place(content))
        else:
            places.append(len(small_table) if content else END)
            small_table += chain(len(small_table), -(-len(content) // SMALL))
            small += padded(content, SMALL)
    small_start = place(small)
    small_table_start = place(padded(struct.pack(f"<{len(small_table)}I", *small_table), SECTOR, b"\xff"))
    directory = entry("Root Entry", 5, FREE, 1 if streams else FREE, small_start, len(small))
    for number, ((name, content), start) in enumerate(zip(streams.items(), places), 1):
        directory += entry(name, 2, number + 1 if number < len(streams) else FREE, FREE, start, len(content))
    directory_start = place(directory)
    # The header lists the first sectors of the table; sectors of their own, each with the next one's number, the rest.
    count, lists = 1, 0
    while count * SECTOR // 4 < len(table) + count + lists:
        count += 1
        lists = -(-max(0, count - IN_HEADER) // IN_LIST)
    listed = [*range(len(table), len(table) + count)]
    listed += [FREE] * (IN_HEADER + lists * IN_LIST - count)
    first_list = len(table) + count
    table += [TABLE] * count + [LIST] * lists
    more = b""
    for number in range(lists):
        begin = IN_HEADER + number * IN_LIST
        following = first_list + number + 1 if number + 1 < lists else END
        more += struct.pack("<128I", *listed[begin:begin + IN_LIST], following)
    header = (b"\xd0\xcf\x11\xe0\xa1\xb1\x1a\xe1" + bytes(16) + struct.pack("<HHHHH", 0x3E, 3, 0xFFFE, 9, 6) + bytes(10)
              + struct.pack("<8I", count, directory_start, 0, SMALL_BELOW, small_table_start, 1,
                            first_list if lists else END, lists)
              + struct.pack("<109I", *listed[:IN_HEADER]))
    return header + data + padded(struct.pack(f"<{len(table)}I", *table), SECTOR, b"\xff") + more


def aes(key, start, text):
    """Without a start vector, nothing is chained."""
    cipher = [f"-aes-{len(key) * 8}-cbc", "-iv", start.hex()] if start else [f"-aes-{len(key) * 8}-ecb"]
    done = subprocess.run(["openssl", "enc", *cipher, "-nopad", "-K", key.hex()], input=padded(text, 16),
                          stdout=subprocess.PIPE, check=True)
    return done.stdout


def locked_streams(package, password, spin_count=100000):
    """The streams of the package in "agile" encryption: AES-256, SHA-512."""
    def sha(*parts):
        return hashlib.sha512(b"".join(parts)).digest()

    salt, data_salt, verifier = (sha(package, what)[:16] for what in (b"salt", b"data", b"verifier"))
    key = sha(package, b"key")[:32]
    spun = sha(salt, password.encode("utf-16-le"))
    for number in range(spin_count):
        spun = sha(struct.pack("<I", number), spun)

    def locked(purpose, text):
        return base64.b64encode(aes(sha(spun, bytes.fromhex(purpose))[:32], salt, text)).decode()

    def cipher(own_salt):
        return ('saltSize="16" blockSize="16" keyBits="256" hashSize="64" cipherAlgorithm="AES" '
                'cipherChaining="ChainingModeCBC" hashAlgorithm="SHA512" '
                f'saltValue="{base64.b64encode(own_salt).decode()}"')

    segments = [aes(key, sha(data_salt, struct.pack("<I", at // 4096))[:16], package[at:at + 4096])
                for at in range(0, len(package), 4096)]
    content = struct.pack("<Q", len(package)) + b"".join(segments)

    def guarded(purpose, text):
        return base64.b64encode(aes(key, sha(data_salt, bytes.fromhex(purpose))[:16], text)).decode()

    guard = sha(package, b"guard")
    guard_value = hmac.digest(guard, content, "sha512")
    office = "http://schemas.microsoft.com/office/2006"
    descriptor = (
        f'<?xml version="1.0" encoding="UTF-8" standalone="yes"?>\r\n<encryption xmlns="{office}/encryption" '
        f'xmlns:p="{office}/keyEncryptor/password"><keyData {cipher(data_salt)}/>'
        f'<dataIntegrity encryptedHmacKey="{guarded("5fb2ad010cb9e1f6", guard)}" '
        f'encryptedHmacValue="{guarded("a0677f02b22c8433", guard_value)}"/><keyEncryptors>'
        f'<keyEncryptor uri="{office}/keyEncryptor/password"><p:encryptedKey spinCount="{spin_count}" {cipher(salt)} '
        f'encryptedVerifierHashInput="{locked("fea7d2763b4b9e79", verifier)}" '
        f'encryptedVerifierHashValue="{locked("d7aa0f6d3061344e", sha(verifier))}" '
        f'encryptedKeyValue="{locked("146e0be7abacd0d6", key)}"/></keyEncryptor></keyEncryptors></encryption>')
    return {"EncryptionInfo": bytes.fromhex("0400040040000000") + descriptor.encode(), "EncryptedPackage": content}
