#include "foundation/Translate.h"
#include "foundation/Globals.h"

#include <QSet>

#include <gtest/gtest.h>

using vmk::G;
using vmk::Translate;

namespace
{

struct LanguageScope {
    explicit LanguageScope(int language) { G().LanguageIndex = language; }
    ~LanguageScope() { G().LanguageIndex = 0; }
};

QString tr(int language, const QString& text)
{
    LanguageScope scope(language);
    return Translate(text);
}

} // namespace

TEST(Translate, TableHoldsEveryKeyOnceWithFiveTexts)
{
    const auto& table = vmk::TranslationTable();
    // The program's rows and the command-line tool's messages; the keys are unique.
    ASSERT_GE(table.size(), 273u);
    QSet<QString> keys;
    for (const auto& row : table) {
        EXPECT_FALSE(row.key.isEmpty());
        EXPECT_FALSE(keys.contains(row.key)) << row.key.toStdString();
        keys.insert(row.key);
        const bool twoLines = row.key.contains(QStringLiteral("\r\n"));
        const bool trailingSpace = row.key.endsWith(u' ');
        for (const QString& cell : row.cells) {
            EXPECT_FALSE(cell.isEmpty()) << row.key.toStdString();
            // A key with a line break has one in every translation; so with a trailing space.
            EXPECT_EQ(cell.contains(QStringLiteral("\r\n")), twoLines) << row.key.toStdString();
            EXPECT_EQ(cell.endsWith(u' '), trailingSpace) << row.key.toStdString();
            EXPECT_FALSE(cell.contains(u'\t'));
        }
    }
    EXPECT_EQ(keys.size(), qsizetype(table.size()));
    // Table order: first, a few in the middle, last.
    EXPECT_EQ(table.front().key, QStringLiteral("Leyendo configuración"));
    EXPECT_EQ(table[4].key, QStringLiteral("Aceptar"));
    EXPECT_EQ(
        table[124].key, QStringLiteral("¡Carpeta de Cuarentena no existe!\r\nPor favor, revise su configuración!"));
    EXPECT_EQ(table[210].key, QStringLiteral("Si"));
    // Rows added later go after the program's own; these two stay in the table wherever they stand.
    EXPECT_TRUE(keys.contains(QStringLiteral("¡Error, el dispositivo NO pudo expulsarse correctamente!")));
    EXPECT_TRUE(keys.contains(QStringLiteral("avupdate.exe no dejó su registro")));
    // The misspelt keys are the program's own.
    for (const char* k : { "Carpeta compimida", "Tamaño maximo de archivos", "¡Error de compresion!",
             "¡Error de compresión!", "!El archivo ya existe en Cuarentena!", "Abortar después de ",
             "Error: ", "!Instalación finalizada correctamente!\r\n¿Desea que iniciar Vormak ahora?" })
        EXPECT_TRUE(keys.contains(QString::fromUtf8(k))) << k;
}

TEST(Translate, TellingRowsExactlyInEveryLanguage)
{
    const QStringList rows[] = {
        { "Panel de control", "Control Panel", "Systemsteuerung", "Painel de Controle", "Panneau de configuration",
            "Pannello di controllo" },
        { "Aceptar", "OK", "OK", "OK", "OK", "OK" },
        { "Unidad", "Unit", "Unity", "Unidade", "Unité", "Unità" },
        { "Si", "Yes", "Ja", "Sim", "Oui", "Si" },
        { "No", "No", "Nein", "Não", "Non", "No" },
        { "Expulsar", "Eject", "Auswerfen", "Eject", "Éjecter", "Espellere" },
        { "Respaldos", "Backups", "Backups", "Backups", "sauvegardes", "Backups" },
        { "Folder Padre", "Father Folder", "Vater Folder", "Pai pasta", "Père dossier", "Padre cartella" },
        { "Leyendo configuración", "Reading configuration", "Lesung configuration", "Leitura configuração",
            "Lecture de configuration", "Lettura di configurazione" },
    };
    for (const QStringList& row : rows) {
        EXPECT_EQ(tr(0, row[0]), row[0]);
        for (int language = 1; language <= 5; ++language)
            EXPECT_EQ(tr(language, row[0]), row[language]) << row[0].toStdString() << " " << language;
        EXPECT_EQ(tr(6, row[0]), QString()) << row[0].toStdString();
    }
}

TEST(Translate, MatchRules)
{
    // Spanish is never looked up.
    EXPECT_EQ(tr(0, QStringLiteral("Cancelar")), QStringLiteral("Cancelar"));
    for (int language = 0; language <= 6; ++language) {
        // Empty stays empty; unknown text stays Spanish, also in Chinese.
        EXPECT_EQ(tr(language, QString()), QString());
        EXPECT_EQ(tr(language, QStringLiteral("Texto desconocido")), QStringLiteral("Texto desconocido"));
        // A key with a suffix is an unknown text; so is a key in other case or with a space more.
        EXPECT_EQ(tr(language, QStringLiteral("¡Error iniciando servicio! (5)")),
            QStringLiteral("¡Error iniciando servicio! (5)"));
        EXPECT_EQ(tr(language, QStringLiteral("aceptar")), QStringLiteral("aceptar"));
        EXPECT_EQ(tr(language, QStringLiteral("Aceptar ")), QStringLiteral("Aceptar "));
        // A label that shows a number is unchanged.
        EXPECT_EQ(tr(language, QStringLiteral("42")), QStringLiteral("42"));
    }
    // The two spellings are two rows with their own texts.
    EXPECT_EQ(tr(1, QStringLiteral("¡Error de compresión!")), QStringLiteral("Compression error!"));
    EXPECT_EQ(tr(1, QStringLiteral("¡Error de compresion!")), QStringLiteral("Compresion error!"));
    // The line break is part of the key and of the translation.
    EXPECT_EQ(tr(1, QStringLiteral("¡Carpeta de Cuarentena no existe!\r\nPor favor, revise su configuración!")),
        QStringLiteral("Quarantine Folder does not exist!\r\nPlease, check your configuration!"));
    EXPECT_EQ(tr(1, QStringLiteral("¡Carpeta de Cuarentena no existe!")),
        QStringLiteral("¡Carpeta de Cuarentena no existe!"));
    // Trailing spaces belong to the key.
    EXPECT_EQ(tr(2, QStringLiteral("Error: ")), QStringLiteral("Fehler: "));
    EXPECT_EQ(tr(2, QStringLiteral("Error:")), QStringLiteral("Error:"));
    // A language index outside the table's range changes nothing.
    EXPECT_EQ(tr(9, QStringLiteral("Aceptar")), QStringLiteral("Aceptar"));
}

TEST(Translate, FirstMatchWinsOverTheTableOrder)
{
    // Every key answers with its own row, the first row holding it.
    const auto& table = vmk::TranslationTable();
    for (int language = 1; language <= 5; ++language) {
        LanguageScope scope(language);
        for (const auto& row : table)
            ASSERT_EQ(Translate(row.key), row.cells[language - 1]) << row.key.toStdString();
    }
    LanguageScope chinese(6);
    for (const auto& row : table)
        ASSERT_EQ(Translate(row.key), QString()) << row.key.toStdString();
}
