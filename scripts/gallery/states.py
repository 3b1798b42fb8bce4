"""What the gallery shows: every layout, type and state, each from a payload of examples/payloads."""

import dataclasses


@dataclasses.dataclass(frozen=True)
class State:
    """One push, and what was done to it until its pictures are taken."""
    name: str  # of its files
    title: str
    payload: str  # of examples/payloads
    changes: dict = dataclasses.field(default_factory=dict)  # see `payload_of` in drawing.py
    steps: tuple = ()  # of `tavrolin expand`
    dark: bool = False
    width: int = 375  # of the view, in points
    delivered: str = "2026-12-31T16:00:00"
    at: str = "2026-12-31T16:05:00"  # when it is expanded
    golden: str = ""  # "view" or "card": that picture must stay as it is, byte for byte


@dataclasses.dataclass(frozen=True)
class Section:
    anchor: str
    title: str
    about: str
    states: tuple


# --- Changes to a payload ---------------------------------------------------------------------------

LAYOUT = "cvnUi.lid"
MEDIA = "http://127.0.0.1:8099"
MISSING = {"cvnPayload.mediaUrl": f"{MEDIA}/no-such-file"}
# Without the payload's own colours, which suit one appearance only.
PLAIN = {"cvnPayload.htT": None, "cvnPayload.htS": None, "cvnPayload.htB": None}
PLAIN_VIEW = {"cvnUi.bgc": None, "cvnUi.bggc": None, **PLAIN}


def first(count):
    return lambda items: items[:count]


def without_picture(index):
    return lambda items: [
        {**item, "imgUrl": f"{MEDIA}/no-such-file"} if place == index else item
        for place, item in enumerate(items)]


LONG = {
    "cvnUi.tim": {"ty": 0},
    **PLAIN,
    "aps.alert": {
        "title": "A long weekend in the mountains, with everything that belongs to it and more",
        "subtitle": "Four days, three nights, two huts, and one very old cable car",
        "body": "The path begins behind the station and climbs through larches to the first hut, "
                "where there is soup. The second day follows the ridge, and when the weather is "
                "clear one sees as far as the sea. Bring shoes that you trust, and a sweater.",
    },
}
# When it is expanded. The countdowns of the examples end at 22:00 and 22:59:59.
EVENING = "2026-12-31T20:14:05"
LAST_MINUTE = "2026-12-31T21:59:15"
NIGHT = "2026-12-31T23:30:00"

# What the user does.
NEXT = "press 0"
PREVIOUS = "press 1"
NEXT_ARROW = "tap-on nextImageView"
PREVIOUS_ARROW = "tap-on previousImageView"
IN_THE_MIDDLE = "wait 0.15"  # of what takes 0.3 seconds
AFTERWARDS = "wait 1"

SECTIONS = (
    Section("layout-01", "Layout 01: text", "Texts with a countdown or a rating, and no media.", (
        State("01", "Plain text", "simple", golden="card"),
        State("01-dark", "Plain text, dark", "simple", PLAIN_VIEW, dark=True, golden="card"),
        State("01-long", "Long text and emoji", "long-text", golden="view"),
        State("01-long-narrow", "Long text on a narrow screen", "long-text", width=320),
        State("01-long-dark", "Long text, dark", "long-text", dark=True),
        State("01-countdown", "Countdown beside the text", "countdown",
              {LAYOUT: 1, "cvnPayload.type": "Simple"}, golden="view", at=EVENING),
        State("01-progress-begins", "Countdown over a bar, in the first hour", "timer",
              at="2026-12-31T16:20:00"),
        State("01-progress", "Countdown over a bar", "timer", golden="view", at=EVENING),
        State("01-progress-dark", "Countdown over a bar, dark", "timer", PLAIN_VIEW, dark=True,
              at=EVENING),
        State("01-progress-last-minute", "Countdown over a bar, in the last minute", "timer",
              at=LAST_MINUTE),
        State("01-progress-over", "The time is up", "timer", golden="view", at=NIGHT),
        State("01-hebrew", "Right to left", "right-to-left",
              {LAYOUT: 1, "cvnPayload.type": "Simple"}),
        State("01-rating", "A rating below the text", "rating",
              {LAYOUT: 1, "cvnPayload.type": "Simple"}),
    )),
    Section("layout-21", "Layout 21: picture", "A picture over the texts.", (
        State("21", "Picture", "image", golden="view"),
        State("21-card", "Picture, with the menu of its buttons", "image", golden="card", dark=True),
        State("21-narrow", "Picture on a narrow screen", "image", width=320),
        State("21-wide", "Picture on a wide screen", "image", width=600),
        State("21-arabic", "Right to left, with a button", "arabic", golden="card"),
        State("21-arabic-dark", "Right to left, dark", "arabic", dark=True),
        State("21-countdown", "Countdown", "countdown", golden="view", at=EVENING),
        State("21-countdown-dark", "Countdown, dark", "countdown", dark=True, at=EVENING),
        State("21-countdown-over", "The time is up", "countdown", golden="view", at=NIGHT),
        State("21-options", "Rating, nothing chosen", "rating", golden="view"),
        State("21-options-given", "Rating, the first option chosen", "rating",
              steps=("tap-on Great",), golden="view"),
        State("21-options-dark", "Rating, the last option chosen, dark", "rating",
              steps=("tap-on Not good",), dark=True),
        State("21-stars", "Stars, none given", "rating-stars", golden="view"),
        State("21-stars-given", "Three stars of five", "rating-stars",
              steps=("tap-on ratingViewStackView",), golden="view"),
        State("21-stars-dark", "Three stars of five, dark", "rating-stars",
              steps=("tap-on ratingViewStackView",), dark=True, golden="card"),
        State("21-stars-ten", "Six stars of ten, on a narrow screen", "rating-stars",
              {"cvnUi.rat.sc": 10}, ("tap-on ratingViewStackView",), width=320),
        State("21-long", "Long texts", "image", LONG),
        State("21-missing", "The picture could not be fetched", "image", MISSING, golden="card"),
        State("21-old", "The old form of a payload", "old-format"),
    )),
    Section("layout-23", "Layout 23: texts over the picture",
            "The texts lie over the picture, on a colour, a gradient or a veil.", (
        State("23", "On a gradient", "overlay", golden="view"),
        State("23-color", "On a colour", "overlay", {"cvnUi.lui": {"olc": "0D47A1B0"}}),
        State("23-veil", "On the veil of the light appearance", "overlay",
              {"cvnUi.lui": {}, "cvnPayload.mediaUrl": f"{MEDIA}/landscape-4.jpg", **PLAIN},
              golden="view"),
        State("23-veil-dark", "On the veil of the dark appearance", "overlay", {"cvnUi.lui": {}},
              dark=True, golden="view"),
        State("23-countdown", "With a countdown", "overlay",
              {"cvnUi.tim": {"ty": 1, "et": "2026-12-31T22:00:00", "bgc": "FFC107",
                             "tc": "212121", "ft": "The bus has left"}}, at=EVENING),
        State("23-hebrew", "Right to left", "right-to-left", {LAYOUT: 23}),
        State("23-long", "Long texts, dark", "overlay", {**LONG, "cvnUi.lui": {}}, dark=True),
        State("23-missing", "The picture could not be fetched", "overlay", MISSING),
    )),
    Section("layout-24", "Layout 24: small picture",
            "A small picture beside the texts, and buttons within the view.", (
        State("24", "One button, picture on the left", "small-image", golden="view"),
        State("24-dark", "One button, dark", "small-image", PLAIN, dark=True),
        State("24-right", "Picture on the right", "small-image", {"cvnUi.lui.img": {"p": 2}},
              golden="view"),
        State("24-five", "Five buttons", "five-buttons", golden="view"),
        State("24-five-narrow", "Five buttons on a narrow screen, dark", "five-buttons", width=320,
              dark=True),
        State("24-plain", "Five buttons without a style", "five-buttons", {"cvnUi.lui.btn": None}),
        State("24-plain-dark", "Five buttons without a style, dark", "five-buttons",
              {"cvnUi.lui.btn": None, **PLAIN}, dark=True),
        State("24-wide", "Five buttons on a wide screen", "five-buttons", width=600),
        State("24-hebrew", "Right to left", "right-to-left", golden="view"),
        State("24-arabic", "Right to left, with a button", "arabic", {LAYOUT: 24}),
        State("24-long", "Long texts", "small-image", LONG),
        State("24-missing", "The picture could not be fetched", "small-image", MISSING,
              golden="view"),
    )),
    Section("layout-41", "Layout 41: animated picture", "An animated picture over the texts.", (
        State("41", "The first frame", "gif", golden="view"),
        State("41-later", "Half a second later", "gif", steps=("wait 0.5",), golden="view"),
        State("41-dark", "Dark", "gif", {"cvnUi.bgc": None}, dark=True),
        State("41-missing", "The picture could not be fetched", "gif", MISSING),
    )),
    Section("layout-51", "Layout 51: sound", "A player for a sound.", (
        State("51", "Ready to play", "audio", golden="view"),
        State("51-playing", "Playing", "audio", steps=("tap-on playPauseButton", "wait 1")),
        State("51-dark", "Dark", "audio", {"cvnUi.bgc": None}, dark=True, golden="card"),
        State("51-missing", "The sound could not be fetched", "audio", MISSING),
    )),
    Section("layout-61", "Layout 61: video", "A player for a video.", (
        State("61", "Ready to play", "video"),
        State("61-playing", "Playing", "video", steps=("tap-on playButton", "wait 1")),
        State("61-narrow", "On a narrow screen, dark", "video", width=320, dark=True),
        State("61-missing", "The video could not be fetched", "video", MISSING),
    )),
    Section("layout-71", "Layout 71: carousel, a picture at a time",
            "The menu of the notification turns the pages.", (
        State("71", "The first page", "carousel-landscape", {LAYOUT: 71}, golden="card"),
        State("71-second", "The second page", "carousel-landscape", {LAYOUT: 71},
              (NEXT, AFTERWARDS), golden="view"),
        State("71-sliding", "In the middle of a slide", "carousel-landscape", {LAYOUT: 71},
              (NEXT, IN_THE_MIDDLE), golden="view"),
        State("71-last", "Back from the first page to the last", "carousel-landscape",
              {LAYOUT: 71}, (PREVIOUS, AFTERWARDS)),
        State("71-dark", "Dark, without colours of its own", "carousel-landscape",
              {LAYOUT: 71, **PLAIN_VIEW}, dark=True),
        State("71-one", "One item", "carousel-landscape",
              {LAYOUT: 71, "cvnPayload.carousel": first(1)}),
        State("71-missing", "A picture could not be fetched", "carousel-landscape",
              {LAYOUT: 71, "cvnPayload.carousel": without_picture(0)}),
        State("71-over", "The time is up", "carousel-landscape", {LAYOUT: 71},
              at=NIGHT),
    )),
    Section("layout-72", "Layout 72: carousel from edge to edge",
            "Arrows on the picture turn the pages, and so does the time.", (
        State("72", "The first page", "carousel-landscape", golden="card"),
        State("72-fading", "In the middle of a fade", "carousel-landscape", {"cvnUi.cs.te": 2},
              (NEXT_ARROW, IN_THE_MIDDLE), golden="view"),
        State("72-sliding", "In the middle of a slide", "carousel-landscape",
              steps=(NEXT_ARROW, IN_THE_MIDDLE), golden="view"),
        State("72-third", "The third page", "carousel-landscape", {"cvnUi.cs.te": 0},
              (NEXT_ARROW, NEXT_ARROW)),
        State("72-by-itself", "The second page, which came by itself", "carousel-landscape",
              steps=("wait 5",), golden="view"),
        State("72-wrap", "From the last page to the first", "carousel-landscape",
              steps=(PREVIOUS_ARROW, AFTERWARDS, NEXT_ARROW, IN_THE_MIDDLE)),
        State("72-dark", "Dark", "carousel-landscape",
              PLAIN_VIEW, dark=True, golden="view"),
        State("72-narrow", "On a narrow screen", "carousel-landscape", width=320),
        State("72-wide", "On a wide screen", "carousel-landscape", width=600),
        State("72-plain", "Without colours over the slides", "carousel-landscape",
              {"cvnUi.lui": {"spd": 4}}),
    )),
    Section("layout-91", "Layout 91: carousel, two pictures at a time",
            "The menu of the notification moves on by one picture.", (
        State("91", "The first two", "carousel-portrait", golden="card"),
        State("91-second", "One further", "carousel-portrait", steps=(NEXT, AFTERWARDS),
              golden="view"),
        State("91-sliding", "In the middle of a slide", "carousel-portrait",
              steps=(NEXT, IN_THE_MIDDLE)),
        State("91-wrap", "The last and the first", "carousel-portrait",
              steps=(PREVIOUS, AFTERWARDS), golden="view"),
        State("91-dark", "Dark", "carousel-portrait", dark=True, golden="view"),
        State("91-two", "Two items", "carousel-portrait", {"cvnPayload.carousel": first(2)}),
        State("91-missing", "A picture could not be fetched", "carousel-portrait",
              {"cvnPayload.carousel": without_picture(1)}),
        State("91-narrow", "On a narrow screen", "carousel-portrait", width=320),
    )),
    Section("layout-92", "Layout 92: pictures in a row", "Up to five small pictures.", (
        State("92", "Five pictures", "multi-image", golden="card"),
        State("92-dark", "Five pictures, dark", "multi-image", {"cvnUi.bgc": None}, dark=True,
              golden="view"),
        State("92-four", "Four pictures", "multi-image", {"cvnPayload.carousel": first(4)}),
        State("92-three-left", "Three pictures on the left", "multi-image",
              {"cvnPayload.carousel": first(3), "cvnUi.lui.pos": 1}, golden="view"),
        State("92-two-right", "Two pictures on the right", "multi-image",
              {"cvnPayload.carousel": first(2), "cvnUi.lui.pos": 3}, golden="view"),
        State("92-one", "One picture", "multi-image", {"cvnPayload.carousel": first(1)}),
        State("92-texts", "With icon and texts", "multi-image", {"cvnUi.tim": {"ty": 0}}),
        State("92-pictures-only", "The same push, pictures only", "multi-image",
              {"cvnUi.tim": {"ty": 0}, "cvnUi.lui.lt": 1}),
        State("92-missing", "A picture could not be fetched", "multi-image",
              {"cvnPayload.carousel": without_picture(2)}),
        State("92-narrow", "On a narrow screen", "multi-image", width=320),
    )),
)


def all_states():
    return [state for section in SECTIONS for state in section.states]
