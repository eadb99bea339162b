#!/usr/bin/env python3
"""Writes tests/data/corpus: small files in the shapes that chat apps, mail
programs and phones write, each made up here (names, numbers and text are
invented). Run it from anywhere; it rewrites the files it makes and leaves
the rest (the README and the Telegram HTML page, written by hand). The JPEG
needs ImageMagick's `convert` (scripts/setup installs it)."""

import base64
import calendar
import io
import json
import os
import subprocess
import time
import zipfile

HERE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "corpus")
LRM = "\u200e"  # iPhone exports put it before attachments and system lines
NNBSP = "\u202f"  # newer phones put it between the time and AM/PM


def write(relative, data, eol="\n"):
    path = os.path.join(HERE, relative)
    os.makedirs(os.path.dirname(path), exist_ok=True)
    if isinstance(data, str):
        data = data.replace("\n", eol).encode("utf-8")
    with open(path, "wb") as f:
        f.write(data)
    return data


# WhatsApp ------------------------------------------------------------------

write("whatsapp/Android 2016/WhatsApp Chat with Alex Morgan.txt", """\
12/03/2016, 21:14 - Messages you send to this chat and calls are now secured with end-to-end encryption. Tap for more info.
12/03/2016, 21:15 - Sam Lee: Landed! The queue at passport control was endless
12/03/2016, 21:16 - Alex Morgan: Welcome back 😊
12/03/2016, 21:16 - Alex Morgan: <Media omitted>
13/03/2016, 08:02 - Sam Lee: Breakfast at 9?
a second line of the same message
""")

write("whatsapp/Android 2024 US/WhatsApp Chat with Alex Morgan.txt", f"""\
3/12/24, 9:14{NNBSP}PM - Messages and calls are end-to-end encrypted. No one outside of this chat, not even WhatsApp, can read or listen to them. Tap to learn more.
3/12/24, 9:15{NNBSP}PM - Sam Lee: Booked the flights for April
3/12/24, 9:16{NNBSP}PM - Alex Morgan: IMG-20240312-WA0003.jpg (file attached)
3/12/24, 9:16{NNBSP}PM - Alex Morgan: This message was deleted
3/13/24, 7:45{NNBSP}AM - Sam Lee: Morning <This message was edited>
""", eol="\r\n")

write("whatsapp/iPhone 2018 CR/_chat.txt", f"""\
[12/03/2018, 21:15:03] Sam Lee: Is the ferry still running tomorrow?
[12/03/2018, 21:17:45] Alex Morgan: Yes, the 10:40 one
{LRM}[12/03/2018, 21:18:02] Alex Morgan: {LRM}image omitted
[13/03/2018, 07:30:11] Sam Lee: See you at the pier
""", eol="\r")

write("whatsapp/iPhone 2024 BOM/_chat.txt", "\ufeff" + f"""\
[12.03.24, 21:15:03] Alex Morgan: {LRM}Messages and calls are end-to-end encrypted. No one outside of this chat, not even WhatsApp, can read or listen to them.
[12.03.24, 21:15:09] Sam Lee: Hast du den Schlüssel?
{LRM}[12.03.24, 21:16:30] Alex Morgan: {LRM}<attached: 00000004-PHOTO-2024-03-12-21-16-30.jpg>
[12.03.24, 21:17:00] Sam Lee: Danke ❤️
""")

write("whatsapp/UTF-16/WhatsApp Chat with Alex Morgan.txt", ("\ufeff" + """\
14/02/2020, 19:00 - Sam Lee: Happy Valentine's day 🌹
14/02/2020, 19:02 - Alex Morgan: Dinner at 8, table booked
15/02/2020, 10:11 - Sam Lee: Thank you for last night
""").replace("\n", "\r\n").encode("utf-16-le"))

# One chat that moved from an Android phone to an iPhone and was exported
# from each, the two files pasted together.
write("whatsapp/Mixed phones/WhatsApp Chat with Alex Morgan.txt", f"""\
01/06/2022, 18:00 - Sam Lee: New phone arrives tomorrow
01/06/2022, 18:05 - Alex Morgan: Don't lose the chat history!
[02/06/2022, 09:12:44] Sam Lee: Did it work?
[02/06/2022, 09:13:01] Alex Morgan: It did 🎉
{LRM}[02/06/2022, 09:13:20] Alex Morgan: {LRM}sticker omitted
""")

# A zipped chat cut off halfway through, as an interrupted download leaves it,
# and one whose central directory points at the wrong place.
chat = "[05/05/2023, 12:00:00] Sam Lee: Lunch?\n[05/05/2023, 12:01:00] Alex Morgan: Yes\n"
buffer = io.BytesIO()
with zipfile.ZipFile(buffer, "w", zipfile.ZIP_DEFLATED) as z:
    for name, data in [("_chat.txt", chat * 40),
                       ("00000002-PHOTO-2023-05-05-12-01-00.jpg", bytes(range(256)) * 8)]:
        z.writestr(zipfile.ZipInfo(name, date_time=(2023, 5, 5, 12, 1, 0)), data,
                   zipfile.ZIP_DEFLATED)
whole = buffer.getvalue()
write("archives/WhatsApp Chat - Alex Morgan (truncated).zip", whole[: len(whole) // 2])
directory = whole.rfind(b"PK\x01\x02")
damaged = bytearray(whole)
damaged[directory + 42 : directory + 46] = (len(whole) * 3).to_bytes(4, "little")
write("archives/WhatsApp Chat - Alex Morgan (bad directory).zip", bytes(damaged))

# Telegram ------------------------------------------------------------------


USER_IDS = {"Sam Lee": "user111", "Alex Morgan": "user222", "Jo Lee": "user333"}


def unixtime(date):
    return str(calendar.timegm(time.strptime(date, "%Y-%m-%dT%H:%M:%S")))


def telegram_message(id, date, sender, text, **extra):
    m = {"id": id, "type": "message", "date": date, "date_unixtime": unixtime(date),
         "from": sender, "from_id": USER_IDS[sender], "text": text}
    m.update(extra)
    return m


alex_chat = {
    "name": "Alex Morgan", "type": "personal_chat", "id": 4815162342,
    "messages": [
        {"id": 1, "type": "service", "date": "2024-03-12T21:00:00", "date_unixtime": unixtime("2024-03-12T21:00:00"),
         "actor": "Alex Morgan", "actor_id": "user222", "action": "phone_call",
         "duration_seconds": 754, "text": "", "text_entities": []},
        telegram_message(2, "2024-03-12T21:15:03", "Sam Lee", "Good night ✨"),
        telegram_message(3, "2024-03-12T21:16:10", "Alex Morgan",
                         ["Look: ", {"type": "link", "text": "https://example.org/flat"}, " 🏠"]),
        telegram_message(4, "2024-03-13T08:00:00", "Sam Lee", "",
                         photo="photos/photo_1@13-03-2024_08-00-00.jpg", width=1280, height=960),
        telegram_message(5, "2024-03-13T08:01:00", "Alex Morgan", "Nice!",
                         reply_to_message_id=4, edited="2024-03-13T08:02:00"),
    ],
}
write("telegram/Single chat/result.json", json.dumps(alex_chat, ensure_ascii=False, indent=1))

family = {
    "name": "Lee family", "type": "private_group", "id": 1000000001,
    "messages": [
        {"id": 10, "type": "service", "date": "2023-12-24T10:00:00", "date_unixtime": unixtime("2023-12-24T10:00:00"),
         "actor": "Sam Lee", "actor_id": "user111", "action": "create_group",
         "title": "Lee family", "members": ["Sam Lee", "Jo Lee"], "text": "", "text_entities": []},
        telegram_message(11, "2023-12-24T10:05:00", "Jo Lee", "Bring Alex to dinner!"),
    ],
}
saved = {"type": "saved_messages", "id": 1, "messages": []}
write("telegram/Whole account/result.json", json.dumps({
    "about": "Here is the data you requested. Remember: Telegram is ad free.",
    "personal_information": {"user_id": 111, "first_name": "Sam", "last_name": "Lee",
                             "phone_number": "+44 0000 000000", "username": "@samlee", "bio": ""},
    "contacts": {"about": "This is your contact list.", "list": []},
    "chats": {"about": "This page lists all chats from this export.",
              "list": [saved, alex_chat, family]},
    "left_chats": {"about": "This page lists chats you left.", "list": []},
}, ensure_ascii=False, indent=1))

# Messenger and Instagram ---------------------------------------------------


def meta_text(text):
    """Meta's JSON writes each UTF-8 byte of a character as its own \\u00XX."""
    return text.encode("utf-8").decode("latin-1")


def meta_thread(title, thread, messages):
    return json.dumps({
        "participants": [{"name": meta_text("Alex Morgan")}, {"name": meta_text("Sam Lee")}],
        "messages": messages, "title": meta_text(title), "is_still_participant": True,
        "thread_path": thread, "magic_words": [],
    }, indent=2)  # ensure_ascii: every byte becomes \u00XX, as Meta writes it


write("meta/messages/inbox/alexmorgan_10158/message_1.json", meta_thread(
    "Alex Morgan", "inbox/alexmorgan_10158", [  # newest first
        {"sender_name": "Alex Morgan", "timestamp_ms": 1710320400000,
         "content": meta_text("😘"), "reactions": [
             {"reaction": meta_text("❤"), "actor": "Sam Lee"}],
         "is_geoblocked_for_viewer": False},
        {"sender_name": "Sam Lee", "timestamp_ms": 1710284100000,
         "photos": [{"uri": "messages/inbox/alexmorgan_10158/photos/4471_n.jpg",
                     "creation_timestamp": 1710284100}], "is_geoblocked_for_viewer": False},
        {"sender_name": "Alex Morgan", "timestamp_ms": 1710282000000,
         "content": "", "call_duration": 1325, "is_geoblocked_for_viewer": False},
        {"sender_name": "Sam Lee", "timestamp_ms": 1710278103000,
         "content": meta_text("Café at 8? Ça marche 👍"), "is_geoblocked_for_viewer": False},
    ]))

write("meta/your_instagram_activity/messages/inbox/alex.morgan_17841/message_1.json",
      meta_thread("alex.morgan", "inbox/alex.morgan_17841", [
          {"sender_name": "Sam Lee", "timestamp_ms": 1712000000000,
           "content": "Liked a message", "is_geoblocked_for_viewer": False},
          {"sender_name": "Alex Morgan", "timestamp_ms": 1711999000000,
           "content": meta_text("Zürich next week 🇨🇭"), "is_geoblocked_for_viewer": False},
          {"sender_name": "Alex Morgan", "timestamp_ms": 1711998000000,
           "share": {"link": "https://www.example.com/p/reel1/", "share_text": "",
                     "original_content_owner": "someone"},
           "is_geoblocked_for_viewer": False},
      ]))

# LINE and a chat spreadsheet -----------------------------------------------

write("line/[LINE] Chat with Alex Morgan.txt", """\
[LINE] Chat history with Alex Morgan
Saved on: 2024/03/14, 22:02

Tue, 2024/03/12
9:15 PM\tSam Lee\tAre you awake?
9:16 PM\tAlex Morgan\tAlways for you
9:16 PM\tAlex Morgan\t[Sticker]
9:40 PM\tSam Lee\t"Good night
sleep well"

Wed, 2024/03/13
7:02 AM\tAlex Morgan\t☀️ Morning
7:05 AM\tSam Lee unsent a message.
""", eol="\r\n")

write("spreadsheet/Messages with Alex.csv", '''\
Date,Time,Sender,Message
2024-03-12,21:15:03,Sam Lee,"Flights booked, see you on the 5th"
2024-03-12,21:16:40,Alex Morgan,"Can't wait ""so happy"""
2024-03-13,08:00:00,Sam Lee,"Two lines
in one message"
''', eol="\r\n")

# E-mail --------------------------------------------------------------------

attachment = base64.encodebytes(b"%PDF-1.4\n% itinerary: LHR-ZRH 5 April 2024\n%%EOF\n").decode()
write("email/Booking confirmation.eml", f"""\
Return-Path: <bookings@example.travel>
Received: from mail.example.travel by mx.example.net; Tue, 12 Mar 2024 21:15:03 +0000
From: Example Travel <bookings@example.travel>
To: Sam Lee <sam@example.net>
Cc: Alex Morgan <alex@example.net>
Subject: =?UTF-8?Q?Your_booking_=E2=80=93_Z=C3=BCrich?=
Date: Tue, 12 Mar 2024 21:15:03 +0000
Message-ID: <20240312211503.4471@example.travel>
MIME-Version: 1.0
Content-Type: multipart/mixed; boundary="==outer=="

--==outer==
Content-Type: text/plain; charset="utf-8"
Content-Transfer-Encoding: quoted-printable

Dear Sam Lee and Alex Morgan,

your trip to Z=C3=BCrich on 5 April 2024 is confirmed. Two passengers, one=
 double room at the H=C3=B4tel du Lac.

Booking reference: KQ7Z2P
--==outer==
Content-Type: application/pdf; name="itinerary.pdf"
Content-Disposition: attachment; filename="itinerary.pdf"
Content-Transfer-Encoding: base64

{attachment}--==outer==--
""", eol="\r\n")

write("email/Mailbox.mbox", """\
From sam@example.net Sat Jan 06 10:00:00 2024
From: Sam Lee <sam@example.net>
To: Alex Morgan <alex@example.net>
Subject: Photos from the weekend
Date: Sat, 06 Jan 2024 10:00:00 +0000
Content-Type: text/plain; charset=utf-8

Here they are.
>From the top of the hill you can see our house.

From alex@example.net Sat Jan 06 11:30:00 2024
From: Alex Morgan <alex@example.net>
To: Sam Lee <sam@example.net>
Subject: Re: Photos from the weekend
Date: Sat, 06 Jan 2024 11:30:00 +0000
In-Reply-To: <1@example.net>
Content-Type: text/plain; charset=iso-8859-1
Content-Transfer-Encoding: 8bit

""".encode("utf-8") + "Merci, ils sont très beaux.\n".encode("latin-1"))

# Photos and documents --------------------------------------------------------

jpeg = subprocess.run(["convert", "-size", "64x48", "gradient:#c33-#36c", "-strip",
                       "jpeg:-"], check=True, capture_output=True).stdout
write("photos/IMG_20240312_211503.jpg", jpeg[: len(jpeg) * 2 // 3])
write("documents/Lease.pdf", b"")
