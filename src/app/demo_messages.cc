#include "app/demo_messages.h"

namespace tidewrack {
namespace {

using enum DemoMessage::Library;

constexpr DemoPerson alex = {"Alex Morgan", "alex.morgan@example.com"};
constexpr DemoPerson alexAtWork = {"Alex Morgan", "alex@northwind.example"};
constexpr DemoPerson priya = {"Priya Raman", "priya@northwind.example"};
constexpr DemoPerson jonas = {"Jonas Weber", "jonas@northwind.example"};
constexpr DemoPerson maria = {"Maria Costa", "maria.costa@example.org"};

constexpr const char* roadmapConversation = "conv-q2-roadmap";

void addFirstFive(std::vector<DemoMessage>& messages) {
  messages.push_back(
      {.origin = personal,
       .subject = "Your itinerary for Lisbon — June 21",
       .date = {2026, 6, 18, 9, 12},
       .from = {"Atlantic Airways", "bookings@atlantic-airways.example"},
       .to = {alex},
       .labels = {"Inbox", "Important", "Category Updates", "Travel/Lisbon"},
       .category = "Travel",
       .attachment = "boarding-pass-TP1027.pdf",
       .attachmentLine = "Boarding pass TP1027, seat 14A",
       .plainBody = "Hello Alex,\n\nyour trip to Lisbon is confirmed.\n\n"
                    "Flight TP1027, Sunday, June 21\nDeparture 07:40, arrival 09:55\nSeat 14A\n\n"
                    "Your boarding pass is attached. Check-in closes 45 minutes before departure.\n\n"
                    "Have a good flight,\nAtlantic Airways\n",
       .preheader = "Flight TP1027 is confirmed. Your boarding pass is attached.",
       .htmlBody =
           "<h1 style=\"font-size:24px;margin:0 0 16px;\">Lisbon is waiting</h1>\n"
           "<p>Hello Alex, your trip is confirmed.</p>\n"
           "<table style=\"width:100%;border-collapse:collapse;background:#f5f5f7;border-radius:12px;\">\n"
           "<tr><td style=\"padding:16px;\"><strong>TP1027</strong><br>Sunday, June 21</td>\n"
           "<td style=\"padding:16px;\">07:40<br>Departure</td>\n"
           "<td style=\"padding:16px;\">09:55<br>Arrival</td>\n"
           "<td style=\"padding:16px;\">14A<br>Seat</td></tr>\n</table>\n"
           "<p>Your boarding pass is attached. Check-in closes 45 minutes before departure.</p>\n"
           "<p style=\"color:#6e6e73;\">Atlantic Airways</p>"});
  messages.push_back(
      {.origin = work,
       .subject = "Q2 roadmap review — agenda",
       .date = {2026, 6, 17, 16, 45},
       .from = priya,
       .to = {alexAtWork},
       .cc = {jonas},
       .labels = {"Inbox", "Important", "Starred", "Projects/Roadmap"},
       .category = "Work",
       .conversationID = roadmapConversation,
       .attachment = "Q2-roadmap-draft.pdf",
       .attachmentLine = "Q2 roadmap, draft 3",
       .plainBody = "Hi Alex,\n\nhere is the agenda for Friday:\n\n"
                    "1. What we shipped since April\n2. Search and the new importer\n"
                    "3. Hiring for the data team\n4. Open questions\n\n"
                    "The draft is attached. Could you bring the figures for point 2?\n\nThanks,\nPriya\n"});
  messages.push_back(
      {.origin = newsletters,
       .subject = "Summer sale: 30% off our entire collection",
       .date = {2026, 6, 15, 11, 5},
       .from = {"Linen & Co.", "news@linen-and-co.example"},
       .to = {alex},
       .labels = {"Inbox", "Category Promotions"},
       .category = "Shopping",
       .conversationID = "conv-linen-summer",
       .plainBody = "SUMMER SALE\n\n30% off our entire collection until June 30.\n\n"
                    "Shirts, trousers and bed linen, woven in small mills and made to last.\n\n"
                    "See the collection: https://linen-and-co.example/summer\n\n"
                    "You get this message because you asked for our news.\n",
       .preheader = "30% off everything, until June 30.",
       .htmlBody =
           "<div style=\"background:#f3e9dc;border-radius:16px;padding:32px;text-align:center;\">\n"
           "<p style=\"letter-spacing:2px;margin:0;color:#8a6d4b;\">SUMMER SALE</p>\n"
           "<h1 style=\"font-size:34px;margin:8px 0;color:#3d2f1f;\">30% off everything</h1>\n"
           "<p>Shirts, trousers and bed linen, woven in small mills and made to last.</p>\n"
           "<p><a href=\"https://linen-and-co.example/summer\" style=\"background:#3d2f1f;color:#ffffff;"
           "padding:12px 24px;border-radius:999px;text-decoration:none;\">See the collection</a></p>\n"
           "</div>\n<p style=\"color:#6e6e73;font-size:13px;\">Until June 30. You get this message because "
           "you asked for our news.</p>"});
  messages.push_back(
      {.origin = work,
       .subject = "Re: Q2 roadmap review — agenda",
       .date = {2026, 6, 17, 18, 10},
       .from = alexAtWork,
       .to = {priya},
       .cc = {jonas},
       .labels = {"Sent", "Projects/Roadmap"},
       .category = "Work",
       .conversationID = roadmapConversation,
       .replyTo = 2,
       .plainBody = "Hi Priya,\n\nlooks good. I will bring the figures: import is twice as fast as in March, "
                    "and search answers while one types.\n\nCan we give point 3 ten more minutes?\n\nAlex\n\n"
                    "> here is the agenda for Friday:\n> 1. What we shipped since April\n"
                    "> 2. Search and the new importer\n"});
  messages.push_back({.origin = personal,
                      .subject = "Photos from the weekend",
                      .date = {2026, 6, 14, 20, 32},
                      .from = {"Sofia Morgan", "sofia@example.net"},
                      .to = {alex},
                      .labels = {"Inbox", "Starred", "Category Personal", "Family"},
                      .category = "Personal",
                      .conversationID = "conv-weekend-photos",
                      .plainBody = "Hey!\n\nThe photos from the lake are up. The one with the dog and the "
                                   "canoe is my favourite. Dad wants it on the wall.\n\n"
                                   "When are you back from Lisbon?\n\nSofia\n"});
}

void addSecondFive(std::vector<DemoMessage>& messages) {
  messages.push_back({.origin = personal,
                      .subject = "Reminder: Dentist appointment tomorrow at 10:00",
                      .date = {2026, 6, 12, 7, 0},
                      .from = {"Harbour Dental", "reminders@harbour-dental.example"},
                      .to = {alex},
                      .labels = {"Inbox", "Category Updates", "Scheduled"},
                      .category = "Personal",
                      .conversationID = "conv-dentist-reminder",
                      .plainBody = "Dear Alex Morgan,\n\nthis is a reminder of your appointment tomorrow at "
                                   "10:00 with Dr. Lind.\n\nIf you cannot come, please call us today.\n\n"
                                   "Harbour Dental\n"});
  messages.push_back({.origin = work,
                      .subject = "Draft: API migration retro",
                      .date = {2026, 6, 9, 22, 48},
                      .from = alexAtWork,
                      .to = {jonas},
                      .labels = {"Drafts", "Projects/API"},
                      .category = "Work",
                      .plainBody = "What went well\n- the old clients kept working through the whole change\n"
                                   "- one switch to go back\n\nWhat did not\n- we found the time zone bug "
                                   "late\n- \n"});
  messages.push_back(
      {.origin = personal,
       .subject = "Maria invited you to connect",
       .date = {2026, 6, 5, 13, 18},
       .from = {"Colleagues Network", "invitations@colleagues.example"},
       .to = {alex},
       .labels = {"Inbox", "Category Social"},
       .category = "Social",
       .conversationID = "conv-linkedin-invite-maria",
       .plainBody =
           "Maria Costa would like to connect with you.\n\nProduct designer in Porto, 12 contacts in "
           "common.\n\nAnswer: https://colleagues.example/invitations\n",
       .preheader = "Maria Costa would like to connect with you.",
       .htmlBody =
           "<div style=\"border:1px solid #d2d2d7;border-radius:12px;padding:24px;\">\n"
           "<h2 style=\"margin:0 0 4px;\">Maria Costa</h2>\n"
           "<p style=\"margin:0;color:#6e6e73;\">Product designer in Porto, 12 contacts in common</p>\n"
           "<p><a href=\"https://colleagues.example/invitations\">See the invitation</a></p>\n</div>"});
  messages.push_back(
      {.origin = newsletters,
       .subject = "Re: [imagerenderer] Colours look washed out after scaling",
       .date = {2026, 6, 2, 17, 4},
       .from = {"Tomas Lindgren", "tomas@forum.example"},
       .to = {{"imagerenderer list", "imagerenderer@forum.example"}},
       .labels = {"Archived", "Category Forums", "Lists/imagerenderer"},
       .category = "Newsletter",
       .conversationID = "conv-forum-imagerenderer",
       .plainBody = "On Tuesday, Kim wrote:\n> After scaling, the colours of my pictures look washed out.\n\n"
                    "Scale in linear light: convert before you average, and back afterwards. The renderer "
                    "does that when the colour space of the target is set.\n\nTomas\n"});
  messages.push_back({.origin = personal,
                      .subject = "Receipt — Brunch at Casa Lila",
                      .date = {2026, 5, 30, 12, 56},
                      .from = {"Casa Lila", "receipts@casalila.example"},
                      .to = {alex},
                      .labels = {"Archived", "Receipts"},
                      .category = "Finance",
                      .conversationID = "conv-receipt-casalila",
                      .attachment = "receipt-casalila.pdf",
                      .attachmentLine = "Casa Lila, brunch for two, 42.50",
                      .plainBody = "Thank you for your visit.\n\n2 brunch plates   31.00\n2 coffees         "
                                   " 7.00\n1 lemon cake       4.50\nTotal            42.50\n\nSee you "
                                   "soon,\nCasa Lila\n"});
}

void addLastFive(std::vector<DemoMessage>& messages) {
  messages.push_back(
      {.origin = work,
       .subject = "Offer letter — please review and sign",
       .date = {2026, 5, 24, 15, 22},
       .from = {"Northwind People Team", "people@northwind.example"},
       .to = {alexAtWork},
       .labels = {"Inbox", "Important", "Starred", "Northwind/Hiring"},
       .category = "Work",
       .conversationID = "conv-offer-letter",
       .attachment = "offer-letter-2026-05.pdf",
       .attachmentLine = "Offer letter, May 2026",
       .plainBody = "Hello Alex,\n\nthe offer letter for the new position in your team is attached. Please "
                    "review it and sign it by Friday, so that it can go out next week.\n\nKind regards,\n"
                    "Northwind People Team\n",
       .preheader = "Please review and sign by Friday.",
       .htmlBody = "<h2 style=\"margin:0 0 12px;\">Offer letter for review</h2>\n"
                   "<p>Hello Alex,</p>\n<p>the offer letter for the new position in your team is attached. "
                   "Please review it and sign it by <strong>Friday</strong>, so that it can go out next "
                   "week.</p>\n<p>Kind regards,<br>Northwind People Team</p>"});
  messages.push_back({.origin = personal,
                      .subject = "Dinner on Saturday?",
                      .date = {2026, 5, 19, 19, 41},
                      .from = maria,
                      .to = {alex},
                      .labels = {"Inbox", "Category Personal"},
                      .category = "Personal",
                      .conversationID = "conv-dinner-saturday",
                      .plainBody = "Hi Alex,\n\nwe are cooking on Saturday. Fish, if the market has some, "
                                   "otherwise pasta. Seven o'clock?\n\nBring nothing but time.\n\nMaria\n"});
  messages.push_back(
      {.origin = personal,
       .subject = "Your monthly statement is ready",
       .date = {2026, 5, 12, 6, 0},
       .from = {"Coastal Bank", "statements@coastal-bank.example"},
       .to = {alex},
       .labels = {"Archived", "Category Updates", "Receipts/Bank"},
       .category = "Finance",
       .conversationID = "conv-bank-statement-may",
       .attachment = "statement-may-2026.pdf",
       .attachmentLine = "Account statement, May 2026",
       .plainBody = "Dear customer,\n\nyour statement for May is attached. We never ask for your password "
                    "in a message.\n\nCoastal Bank\n",
       .preheader = "Your statement for May is attached.",
       .htmlBody = "<p style=\"font-size:20px;font-weight:600;color:#0b3d62;\">Coastal Bank</p>\n"
                   "<p>Dear customer,</p>\n<p>your statement for May is attached.</p>\n"
                   "<hr style=\"border:none;border-top:1px solid #d2d2d7;\">\n"
                   "<p style=\"color:#6e6e73;font-size:13px;\">We never ask for your password in a "
                   "message.</p>"});
  messages.push_back({.origin = work,
                      .subject = "Welcome to Northwind!",
                      .date = {2025, 11, 4, 9, 15},
                      .from = {"Northwind People Team", "people@northwind.example"},
                      .to = {alexAtWork},
                      .labels = {"Archived", "Northwind/People"},
                      .category = "Work",
                      .conversationID = "conv-welcome-northwind",
                      .plainBody = "Welcome, Alex!\n\nYour desk is by the window on the second floor. Priya "
                                   "will meet you at nine and show you around.\n\nWe are glad that you are "
                                   "here.\n"});
  messages.push_back({.origin = newsletters,
                      .subject = "Last chance: extend your warranty",
                      .date = {2026, 4, 2, 10, 0},
                      .from = {"Warranty Department", "offers@warranty-now.example"},
                      .to = {alex},
                      .labels = {"Spam", "Trash"},
                      .category = "Spam",
                      .plainBody = "FINAL NOTICE\n\nYour warranty ends today. Extend it now and save 70%.\n\n"
                                   "https://warranty-now.example/extend\n",
                      .preheader = "Your warranty ends today.",
                      .htmlBody =
                          "<div style=\"background:#b00020;color:#ffffff;padding:16px;text-align:center;"
                          "font-weight:bold;\">FINAL NOTICE</div>\n"
                          "<p>Your warranty ends <strong>today</strong>. Extend it now and save 70%.</p>\n"
                          "<p><a href=\"https://warranty-now.example/extend\">Extend now</a></p>"});
}

}  // namespace

std::vector<DemoMessage> demoMessageTexts() {
  std::vector<DemoMessage> messages;
  addFirstFive(messages);
  addSecondFive(messages);
  addLastFive(messages);
  return messages;
}

}  // namespace tidewrack
