#include "example/example_parts.h"
#include "model/calendar.h"

namespace kinfolio::ExampleFolder {

Instant at(int year, int month, int day, int hour, int minute, int second) {
    return *Calendar::makeDate(year, month, day, hour, minute, second);
}

void addSpreadsheets(Files& out) {
    // A phone's text-message backup saved as a spreadsheet, with the numeric
    // day-first dates such backups write; 30/08 tells the order.
    out.emplace_back("Text messages/SMS with Jonas.csv",
                     "date,sender,text\n"
                     "03/05/2024 17:45:00,Jonas Berg,Running 10 min late - the bus broke down\n"
                     "03/05/2024 17:46:12,Maya Okafor,No rush! I'll get us a table by the window\n"
                     "30/08/2024 07:10:30,Maya Okafor,\"Parcel from your mum arrived: 2 jars of "
                     "jam, \"\"for the English girl\"\"\"\n"
                     "06/01/2025 12:00:05,Jonas Berg,\"Council tax is set up in both our names.\n"
                     "Reference is on the fridge.\"\n"
                     "02/04/2025 18:31:00,Maya Okafor,Home in 5 ❤️\n");

    // The Quillory Messages exporter's folder for an iMessage conversation.
    const std::string dir = "Quillory - Jonas Berg/";
    out.emplace_back(dir + "verification.txt",
                     "Quillory verification report\n"
                     "Conversation: Jonas Berg\n"
                     "Messages exported: 6\n"
                     "Attachments exported: 1\n"
                     "Exported: 2025-04-20 20:55:13 +0100\n");
    out.emplace_back(
        dir + "messages.csv",
        "date_local,direction,sender,text,attachments\n"
        "2024-09-21 10:02:44 +0100,outgoing,Maya Okafor,Picked up the keys for the allotment!,\n"
        "2024-09-21 10:05:10 +0100,incoming,Jonas Berg,\"Amazing. Potatoes first, then your "
        "tomatoes\",\n"
        "2024-09-21 10:06:00 +0100,event,,Jonas Berg loved \u201cPicked up the keys for the "
        "allotment!\u201d,\n"
        "2024-10-27 15:20:31 +0000,incoming,Jonas Berg,,attachments/IMG_2231.png\n"
        "2024-10-27 15:21:02 +0000,outgoing,Maya Okafor,\"First harvest 🥔\n"
        "We are basically farmers now\",\n"
        "2025-03-08 09:14:57 +0000,outgoing,Maya Okafor,Don't forget the passport photos at 11,\n");
    out.emplace_back(dir + "attachments/IMG_2231.png", photo(2));
}

void addEmails(Files& out) {
    out.emplace_back(
        "Emails/Booking confirmation.eml",
        "From: Northern Skies Airways <bookings@northernskies.example>\n"
        "To: Maya Okafor <maya.okafor@example.com>\n"
        "Subject: =?UTF-8?B?Qm9va2luZyBjb25maXJtZWQg4pyI77iPIExvbmRvbiDihpIgQmVyZ2Vu?=\n"
        "Date: Sat, 20 Jul 2024 12:14:08 +0100\n"
        "Message-ID: <bk-55817@northernskies.example>\n"
        "MIME-Version: 1.0\n"
        "Content-Type: text/plain; charset=utf-8\n"
        "Content-Transfer-Encoding: quoted-printable\n"
        "\n"
        "Dear Maya Okafor,\n"
        "\n"
        "Your booking NS4KQ2 is confirmed.\n"
        "\n"
        "Passengers: Maya Okafor, Jonas Berg\n"
        "Outbound: London Gatwick =E2=86=92 Bergen, 14 August 2024, 07:25\n"
        "Return: Bergen =E2=86=92 London Gatwick, 21 August 2024, 18:05\n"
        "\n"
        "We look forward to welcoming you on board.\n");

    out.emplace_back(
        "Emails/Letters.mbox",
        "From maya.okafor@example.com Thu Dec 12 21:40:00 2024\n"
        "From: Maya Okafor <maya.okafor@example.com>\n"
        "To: Jonas Berg <jonas.berg@example.com>\n"
        "Subject: Tenancy agreement for Elm Road\n"
        "Date: Thu, 12 Dec 2024 21:40:00 +0000\n"
        "MIME-Version: 1.0\n"
        "Content-Type: text/plain; charset=utf-8\n"
        "\n"
        "Hi love,\n"
        "\n"
        "Here is the signed tenancy agreement for the flat. Both our names are on it,\n"
        "starting 18 January. I kept a printed copy in the blue folder.\n"
        "\n"
        ">From now on the post comes to both of us!\n"
        "Maya\n"
        "\n"
        "From jonas.berg@example.com Sat Mar 22 16:02:00 2025\n"
        "From: Jonas Berg <jonas.berg@example.com>\n"
        "To: Maya Okafor <maya.okafor@example.com>\n"
        "Subject: =?utf-8?q?Wedding_notice_=E2=80=93_registry_office?=\n"
        "Date: Sat, 22 Mar 2025 16:02:00 +0000\n"
        "MIME-Version: 1.0\n"
        "Content-Type: multipart/alternative; boundary=\"kinfolio-example-1\"\n"
        "\n"
        "--kinfolio-example-1\n"
        "Content-Type: text/plain; charset=utf-8\n"
        "\n"
        "The registry office has confirmed our ceremony:\n"
        "Saturday 21 June 2025 at 14:00.\n"
        "\n"
        "Our notice of marriage was given on 20 March. Two witnesses needed: I asked Lars,\n"
        "you wanted to ask Priya.\n"
        "\n"
        "Jonas\n"
        "--kinfolio-example-1\n"
        "Content-Type: text/html; charset=utf-8\n"
        "\n"
        "<p>The registry office has confirmed our ceremony:<br>Saturday 21 June 2025 at "
        "14:00.</p><p>Jonas</p>\n"
        "--kinfolio-example-1--\n");
}

}  // namespace kinfolio::ExampleFolder
