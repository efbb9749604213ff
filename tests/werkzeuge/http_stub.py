#!/usr/bin/env python3
"""A small loopback HTTP server for the map's failure tests; prints its port, then serves:

  /html/...    200 with an HTML page (a proxy's or portal's error page instead of a map)
  /still/...   accepts the connection and never answers (the client's time limit must end it)
  /login/...   basic authentication as flurix:geheim: 401 without it, else a 2x2 PNG
  /bild/...    a 2x2 PNG
Every request line is counted; /anzahl answers the count so far (itself not counted).
"""
import base64
import http.server
import struct
import sys
import threading
import time
import zlib

BENUTZER, PASSWORT = "flurix", "geheim"
anzahl = 0
sperre = threading.Lock()


def png(breite=2, hoehe=2, farbe=(0, 128, 255)):
    def block(art, daten):
        return struct.pack(">I", len(daten)) + art + daten + struct.pack(">I", zlib.crc32(art + daten))
    zeile = b"\0" + bytes(farbe) * breite
    return (b"\x89PNG\r\n\x1a\n" + block(b"IHDR", struct.pack(">IIBBBBB", breite, hoehe, 8, 2, 0, 0, 0))
            + block(b"IDAT", zlib.compress(zeile * hoehe)) + block(b"IEND", b""))


class Stub(http.server.BaseHTTPRequestHandler):
    def log_message(self, *args):
        pass

    def antworten(self, status, typ, inhalt, kopf=None):
        self.send_response(status)
        self.send_header("Content-Type", typ)
        self.send_header("Content-Length", str(len(inhalt)))
        for name, wert in (kopf or {}).items():
            self.send_header(name, wert)
        self.end_headers()
        self.wfile.write(inhalt)

    def do_GET(self):
        global anzahl
        if self.path.startswith("/anzahl"):
            self.antworten(200, "text/plain", str(anzahl).encode())
            return
        with sperre:
            anzahl += 1
        if self.path.startswith("/html"):
            self.antworten(200, "text/html", b"<html><head><title>Portal</title></head><body>Wartung</body></html>")
        elif self.path.startswith("/still"):
            time.sleep(60)
        elif self.path.startswith("/login"):
            erwartet = "Basic " + base64.b64encode(f"{BENUTZER}:{PASSWORT}".encode()).decode()
            if self.headers.get("Authorization") != erwartet:
                self.antworten(401, "text/plain", b"Anmeldung erforderlich",
                               {"WWW-Authenticate": 'Basic realm="wms"'})
            else:
                self.antworten(200, "image/png", png())
        else:
            self.antworten(200, "image/png", png())


server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Stub)
server.daemon_threads = True
print(server.server_address[1], flush=True)
server.serve_forever()
