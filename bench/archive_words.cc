#include "archive_words.h"

#include <stdexcept>

#include <unicode/ucnv.h>
#include <unicode/unistr.h>

namespace tidewrack::bench {
namespace {

std::vector<std::string> split(std::string_view text, char separator) {
  std::vector<std::string> parts;
  while (!text.empty()) {
    const auto end = std::min(text.find(separator), text.size());
    if (end > 0) {
      parts.emplace_back(text.substr(0, end));
    }
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return parts;
}

Language language(std::string_view words, std::string_view names, std::vector<const char*> charsets,
                  unsigned weight, bool spaced = true) {
  Language result;
  result.words = split(words, ' ');
  result.names = split(names, ',');
  result.charsets = std::move(charsets);
  result.weight = weight;
  result.spaced = spaced;
  for (const char* charset : result.charsets) {
    auto& list = result.encodedWords.emplace_back();
    for (const auto& word : result.words) {
      list.push_back(encodeAs(word, charset));
    }
  }
  return result;
}

std::vector<Language> makeLanguages() {
  std::vector<Language> list;
  list.push_back(
      language("the meeting report of project and budget for next week please find attached summary with our "
               "comments about delivery schedule customer invoice review thanks you can we will send new "
               "version tomorrow morning team discussion question answer order number account update price "
               "product release station harbour weather north wind garden letter reading evening ticket "
               "travel hotel booking confirmed payment received monthly statement",
               "Alice Carter,Bob Hughes,Carol Whitman,Daniel Price,Emma Stone Wright,Frank Moore,Grace Allen,"
               "Henry Field,Irene Wood,Jack Marsh",
               {"utf-8", "us-ascii", "windows-1252", "iso-8859-1"}, 46));
  list.push_back(
      language("la reunión informe del proyecto presupuesto mañana señor año próxima semana adjunto resumen "
               "comentarios "
               "entrega cliente factura revisión gracias podemos enviar versión equipo pregunta respuesta "
               "pedido número "
               "cuenta actualización precio producto estación puerto tiempo jardín carta lectura tarde viaje "
               "habitación",
               "María Núñez,José García,Lucía Peña,Andrés Ibáñez,Sofía Muñoz,Íñigo Álvarez",
               {"utf-8", "iso-8859-1", "windows-1252", "iso-8859-15"}, 18));
  list.push_back(language(
      "die Besprechung Bericht über das Projekt für nächste Woche bitte finden Sie im Anhang Zusammenfassung "
      "Änderungen Lieferung Kunde Rechnung Prüfung danke können wir morgen früh senden Übersicht Größe "
      "Straße "
      "Frage Antwort Bestellung Konto Preis Hafen Wetter Garten Brief lesen Abend Reise",
      "Jürgen Müller,Käthe Schröder,Björn Weiß,Ursula Größer,Hans Lüttich",
      {"utf-8", "iso-8859-1", "iso-8859-15"}, 8));
  list.push_back(language(
      "la réunion rapport du projet été prochaine semaine veuillez trouver ci-joint résumé modifications "
      "livraison client facture révision merci nous pouvons envoyer demain équipe réponse commande numéro "
      "compte prix façade garçon où déjà forêt lecture soirée voyage hôtel",
      "Élodie Lefèvre,François Brûlé,Zoé Garçon,Benoît Côté", {"utf-8", "iso-8859-1", "windows-1252"}, 7));
  list.push_back(language(
      "spotkanie raport projektu budżet następny tydzień proszę znaleźć załącznik podsumowanie zmiany "
      "dostawa klient faktura dziękuję możemy wysłać jutro pytanie odpowiedź zamówienie cena żółw łódź",
      "Łukasz Żak,Małgorzata Wójcik,Paweł Dąbrowski", {"utf-8", "iso-8859-2", "windows-1250"}, 3));
  list.push_back(
      language("встреча отчёт проект бюджет следующая неделя пожалуйста приложение изменения доставка клиент "
               "счёт спасибо можем отправить завтра утром вопрос ответ заказ номер цена гавань погода письмо",
               "Иван Петров,Ольга Смирнова,Сергей Кузнецов", {"utf-8", "koi8-r", "windows-1251"}, 5));
  list.push_back(
      language("συνάντηση αναφορά έργο προϋπολογισμός εβδομάδα παρακαλώ συνημμένο περίληψη αλλαγές "
               "παράδοση πελάτης τιμολόγιο ευχαριστώ αύριο ερώτηση απάντηση τιμή λιμάνι καιρός",
               "Γιώργος Παπάς,Ελένη Νίκου", {"utf-8", "iso-8859-7"}, 2));
  list.push_back(language(
      "会議 報告 予算 来週 添付 資料 確認 お願いします 納品 請求書 ありがとう 送信 明日 質問 回答 注文 "
      "価格 港 天気 庭 手紙 読書 旅行",
      "田中太郎,佐藤花子,鈴木一郎", {"utf-8", "iso-2022-jp", "shift_jis"}, 3, false));
  list.push_back(language(
      "会议 报告 项目 预算 下周 附件 摘要 修改 交付 客户 发票 谢谢 明天 问题 回答 订单 价格 港口 天气",
      "王小明,李华", {"utf-8", "gb2312", "gb18030"}, 3, false));
  list.push_back(language(
      "회의 보고서 프로젝트 예산 다음주 첨부 요약 변경 배송 고객 송장 감사합니다 내일 질문 답변 주문 가격",
      "김민수,이영희", {"utf-8", "euc-kr"}, 2));
  list.push_back(
      language("اجتماع تقرير مشروع ميزانية الأسبوع القادم مرفق ملخص تغييرات تسليم عميل فاتورة شكرا غدا سؤال "
               "جواب طلب سعر ميناء طقس حديقة رسالة",
               "محمد علي,فاطمة حسن", {"utf-8", "windows-1256"}, 2));
  list.push_back(
      language("toplantı rapor proje bütçe gelecek hafta lütfen ekte özet değişiklik teslim müşteri fatura "
               "teşekkürler yarın soru cevap sipariş fiyat liman şehir ışık",
               "Ayşe Yılmaz,Çağlar Öztürk", {"utf-8", "iso-8859-9", "windows-1254"}, 1));
  return list;
}

}  // namespace

std::string encodeAs(std::string_view text, const char* charset) {
  UErrorCode status = U_ZERO_ERROR;
  UConverter* converter = ucnv_open(charset, &status);
  if (U_FAILURE(status)) {
    throw std::runtime_error(std::string("unknown charset ") + charset);
  }
  const auto unicode =
      icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
  std::string bytes(static_cast<std::size_t>(unicode.length()) * 8 + 16, '\0');
  const auto length = ucnv_fromUChars(converter, bytes.data(), static_cast<int32_t>(bytes.size()),
                                      unicode.getBuffer(), unicode.length(), &status);
  ucnv_close(converter);
  if (U_FAILURE(status)) {
    throw std::runtime_error(std::string("cannot write the words in ") + charset);
  }
  bytes.resize(static_cast<std::size_t>(length));
  return bytes;
}

const std::vector<Language>& languages() {
  static const std::vector<Language> list = makeLanguages();
  return list;
}

const std::vector<std::string>& systemLabels(bool spanish) {
  static const std::vector<std::string> english = {"Inbox",
                                                   "Important",
                                                   "Opened",
                                                   "Unread",
                                                   "Starred",
                                                   "Sent",
                                                   "Archived",
                                                   "Inbox",
                                                   "Opened",
                                                   "Category Updates",
                                                   "Category Promotions",
                                                   "Category Social"};
  static const std::vector<std::string> inSpanish = {"Recibidos",
                                                     "Importante",
                                                     "Abierto",
                                                     "No leídos",
                                                     "Destacados",
                                                     "Enviados",
                                                     "Archivados",
                                                     "Recibidos",
                                                     "Abierto",
                                                     "Categoría: Notificaciones",
                                                     "Categoría: Promociones",
                                                     "Categoría: Social"};
  return spanish ? inSpanish : english;
}

const std::vector<std::string>& userLabels() {
  static const std::vector<std::string> labels = {
      "Travel",        "Travel/2019",       "Travel/2021/Lisbon",  "Receipts",    "Receipts/Household",
      "Clients/Acme",  "Clients/Northwind", "Clients/Señor Café",  "Family",      "School",
      "Lists/harbour", "Lists/weather",     "Proyectos/Año nuevo", "Bücher",      "読書",
      "Work",          "Work/Reviews",      "Work/Releases",       "Newsletters", "To read"};
  return labels;
}

}  // namespace tidewrack::bench
