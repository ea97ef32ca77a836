"""A zip archive of one stored entry with the traditional encryption, which Python's library only reads."""
import struct
import zlib


def encrypted(name, content, password):
    keys = [0x12345678, 0x23456789, 0x34567890]

    def step(key, byte):
        return zlib.crc32(bytes([byte]), key ^ 0xFFFFFFFF) ^ 0xFFFFFFFF

    def update(byte):
        keys[0] = step(keys[0], byte)
        keys[1] = ((keys[1] + (keys[0] & 0xFF)) * 134775813 + 1) & 0xFFFFFFFF
        keys[2] = step(keys[2], keys[1] >> 24)

    def encrypt(byte):
        value = (keys[2] | 2) & 0xFFFF
        update(byte)
        return byte ^ ((value * (value ^ 1) >> 8) & 0xFF)

    for byte in password:
        update(byte)
    crc = zlib.crc32(content)
    data = bytes(map(encrypt, bytes(11) + struct.pack(">I", crc)[:1] + content))
    common = struct.pack("<HHHHHIIIHH", 20, 1, 0, 0x0DD4, 0x2B29, crc, len(data), len(content), len(name), 0)
    local = b"PK\3\4" + common + name + data
    directory = b"PK\1\2" + struct.pack("<H", 20) + common + struct.pack("<HHHII", 0, 0, 0, 0, 0) + name
    end = b"PK\5\6" + struct.pack("<HHHHIIH", 0, 0, 1, 1, len(directory), len(local), 0)
    return local + directory + end
