#include "library/store_schema.h"

#include <string>

#include "platform/localized.h"

namespace tidewrack {
namespace {

// "TdWr": tells the store from other SQLite files (pragma application_id).
constexpr std::int64_t applicationID = 0x54645772;

constexpr StoreMigration migrations[] = {
    {1, R"(The first layout. What the program reads for a list of messages lies together in the narrow table
"message", so that a list of any length is read without a body; bodies and attachment data lie apart in
"content". The documented entities are views over these tables.)",
     R"sql(
-- The libraries as messages know them. Messages of one library share a row, so that a rename changes one row.
CREATE TABLE source (
  number INTEGER PRIMARY KEY,
  libraryID TEXT NOT NULL DEFAULT '',
  libraryName TEXT NOT NULL DEFAULT ''
);
CREATE INDEX sourceByLibrary ON source (libraryID);

-- Bodies and attachment data. A number is never used twice, so that a reader who kept the number of deleted
-- bytes cannot be shown somebody else's. Bytes beyond the greatest value of the database go on in contentRest.
-- (AUTOINCREMENT promises the same, at twice the cost of an insert.)
CREATE TABLE content (
  number INTEGER PRIMARY KEY,
  bytes BLOB NOT NULL
);
CREATE TABLE contentNumber (
  next INTEGER NOT NULL
);
INSERT INTO contentNumber VALUES (1);
CREATE TABLE contentRest (
  content INTEGER NOT NULL,
  piece INTEGER NOT NULL,
  bytes BLOB NOT NULL
);
CREATE INDEX contentRestByContent ON contentRest (content, piece);

-- No attribute is unique: replicas of several machines must be able to meet here.
CREATE TABLE message (
  number INTEGER PRIMARY KEY,
  id TEXT NOT NULL DEFAULT '',
  source INTEGER NOT NULL,
  subject TEXT NOT NULL DEFAULT '',
  fromName TEXT,
  fromAddress TEXT NOT NULL DEFAULT '',
  toData BLOB NOT NULL DEFAULT x'',
  ccData BLOB NOT NULL DEFAULT x'',
  date REAL,
  snippet TEXT NOT NULL DEFAULT '',
  plainBody INTEGER,
  plainBodySize INTEGER,
  htmlBody INTEGER,
  htmlBodySize INTEGER,
  labelsData BLOB NOT NULL DEFAULT x'',
  conversationID TEXT NOT NULL DEFAULT '',
  inReplyTo TEXT,
  referencesData BLOB NOT NULL DEFAULT x'',
  category TEXT
);
CREATE INDEX messageByID ON message (id);
CREATE INDEX messageBySource ON message (source);

-- Kept in the order of the message, with the size beside it, so that neither needs the data.
CREATE TABLE attachment (
  message INTEGER NOT NULL,
  position INTEGER NOT NULL,
  id BLOB NOT NULL,
  fileName TEXT NOT NULL DEFAULT '',
  mimeType TEXT NOT NULL DEFAULT '',
  contentID TEXT,
  isInline INTEGER NOT NULL DEFAULT 0,
  data INTEGER,
  dataSize INTEGER NOT NULL DEFAULT 0,
  PRIMARY KEY (message, position)
) WITHOUT ROWID;

-- The cascade. Triggers hold in every program that opens the file, foreign keys only where they are switched on.
CREATE TRIGGER messageDeleted AFTER DELETE ON message BEGIN
  DELETE FROM content WHERE number = OLD.plainBody OR number = OLD.htmlBody;
  DELETE FROM attachment WHERE message = OLD.number;
END;
CREATE TRIGGER attachmentDeleted AFTER DELETE ON attachment WHEN OLD.data IS NOT NULL BEGIN
  DELETE FROM content WHERE number = OLD.data;
END;
CREATE TRIGGER contentDeleted AFTER DELETE ON content BEGIN
  DELETE FROM contentRest WHERE content = OLD.number;
END;

-- The documented entities. "number" is not an attribute: it is what the relationship "message" refers to.
-- Of a value beyond the greatest value of the database a view can only show the first piece.
CREATE VIEW PersistedEmailMessage AS SELECT
  m.id AS id, s.libraryID AS sourceLibraryID, s.libraryName AS sourceLibraryName, m.subject AS subject,
  m.fromName AS fromName, m.fromAddress AS fromAddress, m.toData AS toData, m.ccData AS ccData, m.date AS date,
  m.snippet AS snippet,
  (SELECT CAST(bytes AS TEXT) FROM content WHERE number = m.plainBody) AS plainBody,
  (SELECT CAST(bytes AS TEXT) FROM content WHERE number = m.htmlBody) AS htmlBody,
  m.labelsData AS labelsData, m.conversationID AS conversationID, m.inReplyTo AS inReplyTo,
  m.referencesData AS referencesData, m.category AS category, m.number AS number
  FROM message m JOIN source s ON s.number = m.source;

CREATE VIEW PersistedEmailAttachment AS SELECT
  substr(hex(id), 1, 8) || '-' || substr(hex(id), 9, 4) || '-' || substr(hex(id), 13, 4) || '-' ||
    substr(hex(id), 17, 4) || '-' || substr(hex(id), 21) AS id,
  fileName, mimeType,
  coalesce((SELECT bytes FROM content WHERE number = a.data), x'') AS data,
  contentID, isInline, message, position
  FROM attachment a;

CREATE TABLE PersistedSearchToken (
  id TEXT NOT NULL DEFAULT '',
  token TEXT NOT NULL DEFAULT '',
  messageID TEXT NOT NULL DEFAULT ''
);

-- Maintenance by SQL works on the entities.
CREATE TRIGGER persistedEmailMessageDelete INSTEAD OF DELETE ON PersistedEmailMessage BEGIN
  DELETE FROM message WHERE number = OLD.number;
END;
CREATE TRIGGER persistedEmailAttachmentDelete INSTEAD OF DELETE ON PersistedEmailAttachment BEGIN
  DELETE FROM attachment WHERE message = OLD.message AND position = OLD.position;
END;
CREATE TRIGGER persistedEmailMessageUpdate
INSTEAD OF UPDATE OF id, subject, fromName, fromAddress, toData, ccData, date, snippet, labelsData,
  conversationID, inReplyTo, referencesData, category ON PersistedEmailMessage BEGIN
  UPDATE message SET id = NEW.id, subject = NEW.subject, fromName = NEW.fromName, fromAddress = NEW.fromAddress,
    toData = NEW.toData, ccData = NEW.ccData, date = NEW.date, snippet = NEW.snippet,
    labelsData = NEW.labelsData, conversationID = NEW.conversationID, inReplyTo = NEW.inReplyTo,
    referencesData = NEW.referencesData, category = NEW.category
    WHERE number = OLD.number;
END;
CREATE TRIGGER persistedEmailMessageMove
INSTEAD OF UPDATE OF sourceLibraryID, sourceLibraryName ON PersistedEmailMessage BEGIN
  INSERT INTO source (libraryID, libraryName) SELECT NEW.sourceLibraryID, NEW.sourceLibraryName
    WHERE NOT EXISTS (SELECT 1 FROM source
      WHERE libraryID = NEW.sourceLibraryID AND libraryName = NEW.sourceLibraryName);
  UPDATE message SET source = (SELECT min(number) FROM source
      WHERE libraryID = NEW.sourceLibraryID AND libraryName = NEW.sourceLibraryName)
    WHERE number = OLD.number;
END;
CREATE TRIGGER persistedEmailMessagePlainBody INSTEAD OF UPDATE OF plainBody ON PersistedEmailMessage BEGIN
  DELETE FROM content WHERE number = (SELECT plainBody FROM message WHERE number = OLD.number);
  INSERT INTO content (number, bytes) SELECT next, CAST(NEW.plainBody AS BLOB) FROM contentNumber
    WHERE NEW.plainBody IS NOT NULL;
  UPDATE message SET
    plainBody = CASE WHEN NEW.plainBody IS NULL THEN NULL ELSE (SELECT next FROM contentNumber) END,
    plainBodySize = length(CAST(NEW.plainBody AS BLOB))
    WHERE number = OLD.number;
  UPDATE contentNumber SET next = next + 1;
END;
CREATE TRIGGER persistedEmailMessageHTMLBody INSTEAD OF UPDATE OF htmlBody ON PersistedEmailMessage BEGIN
  DELETE FROM content WHERE number = (SELECT htmlBody FROM message WHERE number = OLD.number);
  INSERT INTO content (number, bytes) SELECT next, CAST(NEW.htmlBody AS BLOB) FROM contentNumber
    WHERE NEW.htmlBody IS NOT NULL;
  UPDATE message SET
    htmlBody = CASE WHEN NEW.htmlBody IS NULL THEN NULL ELSE (SELECT next FROM contentNumber) END,
    htmlBodySize = length(CAST(NEW.htmlBody AS BLOB))
    WHERE number = OLD.number;
  UPDATE contentNumber SET next = next + 1;
END;
)sql"},
    {2,
     R"(The search tokens. As rows, each of the millions of pairs of a word and a message would take some eighty
bytes and as many microseconds as all of its like take now. The documented entity is a view over a compact form.)",
     R"sql(
DROP TABLE PersistedSearchToken;

-- The messages whose words are stored, and the numbers that the words use for them.
CREATE TABLE searchDocument (
  message INTEGER PRIMARY KEY,
  number INTEGER NOT NULL
);

-- Some thousands of words a row, {"able":[7,3,1,12],...}: for each the number of the first message that holds
-- it, and for every further one the difference from the one before.
CREATE TABLE searchWords (
  row INTEGER PRIMARY KEY,
  words TEXT NOT NULL
);

-- One row: by which rules the words were cut out of the texts.
CREATE TABLE searchTokenRules (
  version INTEGER NOT NULL
);

-- The words of a message hold as long as it has the texts that they were cut from.
CREATE TRIGGER messageDeletedFromSearch AFTER DELETE ON message BEGIN
  DELETE FROM searchDocument WHERE message = OLD.number;
END;
CREATE TRIGGER messageChangedForSearch AFTER UPDATE OF id, subject, fromName, fromAddress, toData, ccData,
  snippet, plainBody, htmlBody, labelsData ON message BEGIN
  DELETE FROM searchDocument WHERE message = OLD.number;
END;

-- The documented entity, one row for each pair of a word and a message. CROSS JOIN keeps the order, in which a
-- query for one word expands only that word.
CREATE VIEW PersistedSearchToken AS SELECT
  pair.token || ' ' || m.id AS id, pair.token AS token, m.id AS messageID
  FROM (SELECT word.key AS token,
      sum(difference.value) OVER (PARTITION BY word.key ORDER BY difference.key ROWS UNBOUNDED PRECEDING) AS number
    FROM searchWords s, json_each(s.words) word, json_each(word.value) difference) pair
  CROSS JOIN searchDocument d ON d.number = pair.number CROSS JOIN message m ON m.number = d.message;
)sql"},
};

StoreFailure notAStore() {
  return StoreFailure(localized("store_error_foreign", "The file is not a mail store of Tidewrack.",
                                "Store failure: a database of another program"));
}

StoreFailure newerStore(std::int64_t version) {
  return StoreFailure(formatText(
      localized("store_error_newer",
                "The mail store was written by a newer version of Tidewrack (its version is %d, this program "
                "knows %d). Update Tidewrack to open it.",
                "Store failure: version of the store, version that this program knows"),
      {static_cast<long long>(version), static_cast<long long>(currentStoreVersion())}));
}

void apply(SQLiteConnection& connection, const StoreMigration& migration) {
  SQLiteTransaction transaction(connection, SQLiteTransaction::Kind::exclusive);
  connection.execute(migration.sql);
  connection.execute("PRAGMA application_id = " + std::to_string(applicationID));
  connection.execute("PRAGMA user_version = " + std::to_string(migration.version));
  transaction.commit();
}

}  // namespace

std::span<const StoreMigration> storeMigrations() {
  return migrations;
}

int currentStoreVersion() {
  return storeMigrations().back().version;
}

void migrateStore(SQLiteConnection& connection) {
  const std::int64_t version = connection.queryInteger("PRAGMA user_version");
  const bool isNew = version == 0 && connection.queryInteger("SELECT count(*) FROM sqlite_master") == 0;
  if (!isNew && connection.queryInteger("PRAGMA application_id") != applicationID) {
    throw notAStore();
  }
  if (version > currentStoreVersion()) {
    throw newerStore(version);
  }
  for (const StoreMigration& migration : storeMigrations()) {
    if (migration.version > version) {
      apply(connection, migration);
    }
  }
}

}  // namespace tidewrack
