#include "importers/text_dates.h"

#include <gtest/gtest.h>

#include "model/calendar.h"

namespace kinfolio::Importer {
namespace {

constexpr auto A = DateOrder::automatic;
constexpr auto D = DateOrder::dayFirst;
constexpr auto M = DateOrder::monthFirst;

// The finds in text order, joined by "; ": each is the text it covers, "@",
// the day it names, and the time only when one was written with it (an
// untimed find that is not at midnight shows its time too, and so fails).
std::string findsIn(std::string_view text, DateOrder order) {
    std::string out;
    for (const TextDate& d : findDates(text, order)) {
        bool midnight = Calendar::format(d.date, "HH:mm:ss") == "00:00:00";
        out += (out.empty() ? "" : "; ") + std::string(text.substr(d.begin, d.length)) + " @ " +
               Calendar::format(d.date, d.hasTime || !midnight ? "yyyy-MM-dd HH:mm" : "yyyy-MM-dd");
    }
    return out;
}

// Lines as they come out of the first page of real documents.
TEST(FindDates, ReadsTheDatesOfDocumentLines) {
    const std::tuple<const char*, DateOrder, const char*> cases[] = {
        // Airline e-tickets and boarding passes
        {"E-TICKET RECEIPT  Date of issue: 12 April 2025", A, "12 April 2025 @ 2025-04-12"},
        {"Flight BA117 departs Saturday, 12 April 2025 at 14:30 from London Heathrow", A,
         "Saturday, 12 April 2025 at 14:30 @ 2025-04-12 14:30"},
        {"BOARDING PASS  SMITH/ANNA MS  QF1  DATE 12APR2025  SEAT 34K", A,
         "12APR2025 @ 2025-04-12"},
        {"SYD-LHR  12APR25  GATE 54  BOARDING 13:45", A, "12APR25 @ 2025-04-12"},
        {"Departure: Sat 12 Apr 2025 09:05  Arrival: Sun 13 Apr 2025 06:40", A,
         "Sat 12 Apr 2025 09:05 @ 2025-04-12 09:05; Sun 13 Apr 2025 06:40 @ 2025-04-13 06:40"},
        {"DEPARTURE 12 APR 2025 DEP 0945 ARR 1310", A, "12 APR 2025 @ 2025-04-12"},
        {"Outbound on 12-APR-2025, return 15-Apr-25", A,
         "12-APR-2025 @ 2025-04-12; 15-Apr-25 @ 2025-04-15"},
        {"Your trip on April 12, 2025, 2:30 PM (local time) is confirmed.", A,
         "April 12, 2025, 2:30 PM @ 2025-04-12 14:30"},
        {"Departs 12/04/2025 14:30, arrives 13/04/2025 06:10", D,
         "12/04/2025 14:30 @ 2025-04-12 14:30; 13/04/2025 06:10 @ 2025-04-13 06:10"},
        {"Departure 12 April 2025 1430 hrs", A, "12 April 2025 @ 2025-04-12"},
        {"Valid on Sat 12 Apr 2025 only", A, "Sat 12 Apr 2025 @ 2025-04-12"},
        {"Booking ref 20250412, PNR X7KQ2B", A, ""},
        {"Flight 2025 to Room 1204", A, ""},
        // Hotels and holiday lets
        {"Check-in: April 12th, 2025 — Check-out: April 15th, 2025", A,
         "April 12th, 2025 @ 2025-04-12; April 15th, 2025 @ 2025-04-15"},
        {"Stay dates: 12\u201315 April 2025 (3 nights)", A,
         "12\u201315 April 2025 @ 2025-04-12; 12\u201315 April 2025 @ 2025-04-15"},
        {"Reservation for April 12-15, 2025 at the Grand Hotel", A,
         "April 12-15, 2025 @ 2025-04-12; April 12-15, 2025 @ 2025-04-15"},
        {"Holiday let: 28 Dec \u2013 3 Jan 2025, 6 nights", A,
         "28 Dec \u2013 3 Jan 2025 @ 2024-12-28; 28 Dec \u2013 3 Jan 2025 @ 2025-01-03"},
        {"Trip April 28 \u2013 May 3, 2025", A,
         "April 28 \u2013 May 3, 2025 @ 2025-04-28; April 28 \u2013 May 3, 2025 @ 2025-05-03"},
        {"Festival pass Sat 12 \u2013 Tue 15 April 2025, gates 10:00", A,
         "Sat 12 \u2013 Tue 15 April 2025 @ 2025-04-12; Sat 12 \u2013 Tue 15 April 2025 @ "
         "2025-04-15"},
        {"Check-in opens 12 April 2025 at 12:00 AM", A,
         "12 April 2025 at 12:00 AM @ 2025-04-12 00:00"},
        {"Arriving 12 April, leaving in May", A, ""},
        // Bank statements and bills
        {"Statement period 1 March 2025 to 31 March 2025", A,
         "1 March 2025 @ 2025-03-01; 31 March 2025 @ 2025-03-31"},
        {"12/04/2025  TESCO STORES 3297   \u00A312.04   \u00A31,204.50", D,
         "12/04/2025 @ 2025-04-12"},
        {"Date: 04/13/2025  Amount: $1,204.50", A, "04/13/2025 @ 2025-04-13"},
        {"Date: 04/13/2025  Amount: $1,204.50", D, ""},
        {"Value date 04/05/2025", A, "04/05/2025 @ 2025-05-04"},
        {"Value date 04/05/2025", M, "04/05/2025 @ 2025-04-05"},
        {"Invoice date 4/12/2025 due 5/12/2025", M,
         "4/12/2025 @ 2025-04-12; 5/12/2025 @ 2025-05-12"},
        {"12 Apr 25.00 GBP card payment", A, ""},
        {"Bill date 03 Mar 2025   Account number 1234 5678 90   Due by 24/03/2025", D,
         "03 Mar 2025 @ 2025-03-03; 24/03/2025 @ 2025-03-24"},
        {"Meter read on 2025-03-01, next reading due 2025-06-01", A,
         "2025-03-01 @ 2025-03-01; 2025-06-01 @ 2025-06-01"},
        {"Prices: \u00A312.04 each, $1,204.50 total, 12.5% VAT, 20% off", A, ""},
        {"IBAN GB29 NWBK 6016 1331 9268 19, sort code 60-16-13", A, ""},
        {"Receipt 12/04/2025 12 items", D, "12/04/2025 @ 2025-04-12"},
        {"Printed 01/02/25. Statement date 28 February 2025", D,
         "01/02/25 @ 2025-02-01; 28 February 2025 @ 2025-02-28"},
        // Payslips
        {"Pay date: 25.04.2025   Tax period: 01.04.2025 - 30.04.2025", D,
         "25.04.2025 @ 2025-04-25; 01.04.2025 @ 2025-04-01; 30.04.2025 @ 2025-04-30"},
        {"Period ending 30/04/25  Employee no. 12045", A, "30/04/25 @ 2025-04-30"},
        {"Employed from 1 March 2019 to 28 February 2025 as a nurse", A,
         "1 March 2019 @ 2019-03-01; 28 February 2025 @ 2025-02-28"},
        // Leases
        {"This tenancy agreement is made on the 12th day of April, 2025", A,
         "12th day of April, 2025 @ 2025-04-12"},
        {"Term: 12 months commencing 1st May 2025 and ending 30th April 2026", A,
         "1st May 2025 @ 2025-05-01; 30th April 2026 @ 2026-04-30"},
        {"Tenancy 12 April to 3 May 2025", A,
         "12 April to 3 May 2025 @ 2025-04-12; 12 April to 3 May 2025 @ 2025-05-03"},
        {"Signed this 12th of April 2025 in London", A, "12th of April 2025 @ 2025-04-12"},
        {"Rent is due on the 1st of each month; a 14 day notice applies", A, ""},
        // Certificates
        {"Date of marriage: Saturday 14th June 2025", A, "Saturday 14th June 2025 @ 2025-06-14"},
        {"Ceremony: Saturday, 14 June 2025, 3 pm", A,
         "Saturday, 14 June 2025, 3 pm @ 2025-06-14 15:00"},
        {"Date of birth: 3 September 1989  Place of birth: Manchester", A,
         "3 September 1989 @ 1989-09-03"},
        {"Born 03/09/89 at 10:15", D, "03/09/89 at 10:15 @ 1989-09-03 10:15"},
        {"Issued 12 Apr 25 by the registry", A, "12 Apr 25 @ 2025-04-12"},
        {"Registered 12 SEPT 2025 and Sep. 3, 2025", A,
         "12 SEPT 2025 @ 2025-09-12; Sep. 3, 2025 @ 2025-09-03"},
        {"Valid until 31 February 2025 or 30/02/2025", D, ""},
        // Visa letters, passports and e-mails
        {"Dear Ms Sharma, on 12 April 2025 we received your application (ref 20250412).", A,
         "12 April 2025 @ 2025-04-12"},
        {"Please attend your appointment on Friday 14:30 with your passport.", A, ""},
        {"Your biometric appointment: Mon, 5 May 2025 @ 09:00", A,
         "Mon, 5 May 2025 @ 09:00 @ 2025-05-05 09:00"},
        {"DOB 1990-07-21 Passport no. K1234567 Expiry 20 JUL 2031", A,
         "1990-07-21 @ 1990-07-21; 20 JUL 2031 @ 2031-07-20"},
        {"Sent: Sat, Apr 12, 2025 at 2:30 PM", A,
         "Sat, Apr 12, 2025 at 2:30 PM @ 2025-04-12 14:30"},
        {"Date: Tue, 15 Apr 2025 10:22:31 +0100", A,
         "Tue, 15 Apr 2025 10:22:31 @ 2025-04-15 10:22"},
        {"Generated 2025-04-12T14:30:00Z by the booking system", A,
         "2025-04-12T14:30:00 @ 2025-04-12 14:30"},
        {"Issued 12/04/2025 14:30 +01:00", D, "12/04/2025 14:30 @ 2025-04-12 14:30"},
        {"Lunch 12 April 2025 at 12 pm", A, "12 April 2025 at 12 pm @ 2025-04-12 12:00"},
        {"Dates: 12.04.2025 and 12-04-2025", D, "12.04.2025 @ 2025-04-12; 12-04-2025 @ 2025-04-12"},
        {"Invoice date 4/12/2025", A, "4/12/2025 @ 2025-12-04"},
        {"Meeting April 12 2025 in Leeds", A, "April 12 2025 @ 2025-04-12"},
        {"Call +44 20 7946 0958 or 020 7946 0958", A, ""},
        {"Doors open 19:30, last entry 21:00", A, ""},
        {"We met in April and married on Saturday, 12 April", A, ""},
        // Numbers that only look like dates
        {"App version v2.0.25 build 1204/2025", A, ""},
        {"Add 3/4 cup of flour and 1/2 tsp salt", A, ""},
        {"Serial 112/04/20255, 3/12/04/2025, 1/1/1/1/1 and 12/12/12/12", A, ""},
        {"1. March 2025 statement, 2. April 2025 statement", A, ""},
        {"Part no. 3025-04-12, order 1204-05-06, ratio 1.12.04.2025", A, ""},
        // Text around the date that is not ASCII
        {"Caf\u00E9 Rouge receipt \u201C12 Apr 2025\u201D \u2013 merci", A,
         "12 Apr 2025 @ 2025-04-12"},
        {"\u4E88\u7D04\u65E5\uFF1A2025-04-12 14:30\uFF08\u6771\u4EAC\uFF09", A,
         "2025-04-12 14:30 @ 2025-04-12 14:30"},
        {"\u767A\u884C\u65E5 2025/04/12", A, "2025/04/12 @ 2025-04-12"},
        {"Date\u00A012\u00A0April\u00A02025", A, "12\u00A0April\u00A02025 @ 2025-04-12"},
    };
    for (const auto& [line, order, finds] : cases)
        EXPECT_EQ(findsIn(line, order), finds) << line;
}

}  // namespace
}  // namespace kinfolio::Importer
