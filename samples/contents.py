"""What the sample multiplex holds: its services, streams, programme guide and identifiers.

Times within the stream count from its first bit, in ticks of 90 kHz.
"""

import datetime
from dataclasses import dataclass, field

from dvb import CLOCK, ca_descriptor, descriptor, stream_identifier, u16

START_UTC = datetime.datetime(2024, 5, 17, 12, 59, 55)
CHANGE = 5 * CLOCK  # 13:00:00 UTC: service 102 goes to its next event and gains an audio stream

TRANSPORT_STREAM_ID = 1101
ORIGINAL_NETWORK_ID = NETWORK_ID = 0xFF01  # from 0xFF00 on: for private use
BOUQUET_ID = 0xFF10  # likewise
PROVIDER = "Sample Media"
PAT_VERSION, CAT_VERSION, SDT_VERSION, NIT_VERSION, BAT_VERSION = 3, 1, 5, 2, 9

CA_SYSTEM_A, CA_SYSTEM_B = 0x0071, 0x0072  # in the range of standardised systems: no maker's
EMM_A, EMM_B = 0x0701, 0x0702
ECM_101, ECM_103_VIDEO, ECM_103_AUDIO = 0x01F0, 0x03F0, 0x03F1


@dataclass(frozen=True)
class Stream:
    """One elementary stream. Without a `source` ffmpeg has no part in it."""

    pid: int
    stream_type: int
    descriptors: bytes
    source: str = ""  # ffmpeg's lavfi input
    options: dict = field(default_factory=dict)  # ffmpeg's options for this stream
    since: int = 0  # when the stream begins


@dataclass(frozen=True)
class Programme:
    """One programme of a service's guide."""

    minutes: int
    title: str
    text: str
    genre: int  # both content nibbles of EN 300 468 table 29
    details: str = ""  # for an extended event descriptor


@dataclass(frozen=True)
class Service:
    """One service: what its PMT, its SDT entry and its EITs say."""

    sid: int
    name: str
    service_type: int
    language: str
    pmt_pid: int
    pmt_version: int
    eit_version: int  # of present/following
    schedule_version: int
    streams: tuple
    programmes: tuple  # from noon on, again and again until midnight
    charset: str = "iso6937"
    ca: bytes = b""  # CA descriptors for the whole programme
    free_ca: int = 0

    def streams_at(self, now):
        return [stream for stream in self.streams if stream.since <= now]


def video_stream(pid, source, gop, extra=b""):
    """H.264 of 320x180 at 25 Hz; the encoder's own text (SEI) is left out."""
    options = {
        "c": "libx264", "preset": "medium", "profile": "main", "pix_fmt": "yuv420p",
        "b": "210k", "maxrate": "210k", "bufsize": "105k", "g": str(gop), "keyint_min": str(gop),
        "sc_threshold": "0", "bf": "2", "x264-params": "aud=1:threads=1",
        "bsf": "filter_units=remove_types=6",
    }
    return Stream(pid, 0x1B, stream_identifier(1) + extra, source, options)


def audio_stream(pid, stream_type, tag, language, codec, kbits, tone, extra=b"", channels=1,
                 hertz=48000, since=0):
    """A tone with a beep once a second; `tag` is the component tag."""
    descriptors = descriptor(0x0A, language.encode() + b"\0") + stream_identifier(tag) + extra
    options = {"c": codec, "b": f"{kbits}k", "ac": str(channels), "ar": str(hertz)}
    source = f"sine=frequency={tone}:beep_factor=4:sample_rate={hertz}"
    return Stream(pid, stream_type, descriptors, source, options, since)


SUBTITLES = Stream(0x0104, 0x06, stream_identifier(4) + descriptor(0x59, b"spa\x10" + u16(1, 1)))
APPLICATIONS = Stream(0x0204, 0x05, stream_identifier(4) + descriptor(0x6F, b"\x80\x10\xe0"))
DATA_CAROUSEL = Stream(0x0304, 0x0B, stream_identifier(4) + descriptor(0x66, u16(0x0006)))

CANAL_UNO = Service(
    sid=101, name="Canal Uno", service_type=0x16, language="spa",
    pmt_pid=0x0100, pmt_version=7, eit_version=20, schedule_version=4,
    ca=ca_descriptor(CA_SYSTEM_A, ECM_101), free_ca=1,
    streams=(
        video_stream(0x0101, "testsrc2=s=320x180:r=25", 12),
        audio_stream(0x0102, 0x03, 2, "spa", "mp2", 64, 262),
        audio_stream(0x0103, 0x06, 3, "eng", "ac3", 96, 330, descriptor(0x6A, b"\0"), channels=2),
        SUBTITLES,
    ),
    programmes=(
        Programme(45, "Avance de noticias", "Los titulares del mediodía.", 0x21),
        Programme(45, "Cocina de barrio", "Hoy, arroz con verduras de temporada.", 0xA5,
                  "Tres vecinos preparan el mismo plato a su manera y cada uno explica dónde "
                  "compra, cuánto gasta y qué aprendió de su abuela."),
        Programme(30, "El tiempo", "Nubes en la montaña y sol en la costa.", 0x22),
        Programme(90, "Mañana será otro día", "Capítulo 14. Inés vuelve al pueblo.", 0x15),
    ),
)

TELE_DEUX = Service(
    sid=102, name="Télé Deux", service_type=0x16, language="fra",
    pmt_pid=0x0200, pmt_version=31, eit_version=14, schedule_version=11,
    streams=(
        video_stream(0x0201, "testsrc=s=320x180:r=25", 25),
        audio_stream(0x0202, 0x03, 2, "fra", "mp2", 64, 392),
        audio_stream(0x0203, 0x04, 3, "eng", "mp2", 48, 494, hertz=24000, since=CHANGE),
        APPLICATIONS,
    ),
    programmes=(
        Programme(60, "Jardins d'été", "Trois jardins où l'eau est rare.", 0x93,
                  "Une paysagiste, un retraité et une école montrent comment ils gardent un "
                  "jardin vert avec très peu d'eau."),
        Programme(120, "Le phare éteint", "Film. Un gardien refuse de quitter son île.", 0x10),
        Programme(30, "Journal", "L'actualité de la journée.", 0x21),
        Programme(30, "Mots mêlés", "Le jeu des familles.", 0x31),
    ),
)

KANAL_SUED = Service(
    sid=103, name="Kanal Süd", service_type=0x16, language="deu", charset="iso8859-15",
    pmt_pid=0x0300, pmt_version=2, eit_version=6, schedule_version=0, free_ca=1,
    streams=(
        video_stream(0x0301, "smptebars=s=320x180:r=25,hue=H=0.7*t", 25,
                     ca_descriptor(CA_SYSTEM_A, ECM_103_VIDEO)),
        audio_stream(0x0302, 0x03, 2, "deu", "mp2", 64, 587,
                     ca_descriptor(CA_SYSTEM_B, ECM_103_AUDIO, b"\x10\x20")),
        audio_stream(0x0303, 0x0F, 3, "spa", "aac", 64, 659, descriptor(0x7C, b"\x29")),
        DATA_CAROUSEL,
    ),
    programmes=(
        Programme(50, "Flüsse und Städte", "Heute: Brücken, die niemand mehr braucht.", 0x23),
        Programme(40, "Sport am Mittag", "Rudern, Radfahren und ein großes Turnier.", 0x40),
        Programme(75, "Die Werkstatt", "Aus Alt wird Neu: eine Uhr für 20 € Material.", 0xA2,
                  "Zwei Uhrmacherinnen zerlegen eine Wanduhr, ersetzen die Feder und erklären "
                  "jeden Handgriff für Anfänger."),
        Programme(15, "Nachrichten", "Kurz und knapp.", 0x21),
    ),
)

RADIO_CUATRO = Service(
    sid=104, name="Radio Cuatro", service_type=0x02, language="spa",
    pmt_pid=0x0400, pmt_version=12, eit_version=3, schedule_version=8,
    streams=(audio_stream(0x0401, 0x03, 1, "spa", "mp2", 128, 784, channels=2),),
    programmes=(
        Programme(90, "Discos de ayer", "Vinilos que piden los oyentes.", 0x60),
        Programme(60, "La tertulia", "Libros, cine y una canción en directo.", 0x70),
        Programme(75, "Jazz a media tarde", "Contrabajos de ocho países.", 0x64),
    ),
)

SERVICES = (CANAL_UNO, TELE_DEUX, KANAL_SUED, RADIO_CUATRO)
