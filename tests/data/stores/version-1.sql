-- A store as version 1 of the layout wrote it (sqlite3 .dump), with the two numbers that a dump leaves out.
PRAGMA application_id = 1415862130;
PRAGMA user_version = 1;
BEGIN TRANSACTION;
CREATE TABLE source (
  number INTEGER PRIMARY KEY,
  libraryID TEXT NOT NULL DEFAULT '',
  libraryName TEXT NOT NULL DEFAULT ''
);
INSERT INTO source VALUES(1,'0F0E0D0C-0B0A-4908-8706-050403020100','Takeout');
CREATE TABLE content (
  number INTEGER PRIMARY KEY,
  bytes BLOB NOT NULL
);
INSERT INTO content VALUES(1,X'486967682077617465722061742031303a34300a');
INSERT INTO content VALUES(2,X'3c703e48696768207761746572206174203c623e31303a34303c2f623e3c2f703e');
INSERT INTO content VALUES(3,X'7461626c65');
INSERT INTO content VALUES(4,X'4e6f20646174652c206e6f206c6973742e0a');
CREATE TABLE contentNumber (
  next INTEGER NOT NULL
);
INSERT INTO contentNumber VALUES(5);
CREATE TABLE contentRest (
  content INTEGER NOT NULL,
  piece INTEGER NOT NULL,
  bytes BLOB NOT NULL
);
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
INSERT INTO message VALUES(1,'tides@example.org',1,'Tide tables — März','Harbour Office','office@example.org',X'5b7b2261646472657373223a22616e6e406578616d706c652e6f7267222c226e616d65223a22416e6e227d5d',X'5b5d',1709287200.5,'High water at 10:40',1,20,2,33,X'5b22496e626f78222c225361696c696e67225d','tides@example.org','r@example.org',X'5b2272406578616d706c652e6f7267225d','Travel');
INSERT INTO message VALUES(2,'bare@example.org',1,'(No Subject)',NULL,'unknown@example.org',X'5b5d',X'5b5d',NULL,'',4,18,NULL,NULL,X'5b5d','bare@example.org',NULL,X'5b5d',NULL);
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
INSERT INTO attachment VALUES(1,0,X'00112233445566778899aabbccddeeff','tides.csv','text/csv',NULL,0,3,5);
CREATE TABLE PersistedSearchToken (
  id TEXT NOT NULL DEFAULT '',
  token TEXT NOT NULL DEFAULT '',
  messageID TEXT NOT NULL DEFAULT ''
);
CREATE INDEX sourceByLibrary ON source (libraryID);
CREATE INDEX contentRestByContent ON contentRest (content, piece);
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
CREATE INDEX messageByID ON message (id);
CREATE INDEX messageBySource ON message (source);
COMMIT;
