#include "sim/LocaleTable.h"

namespace sim {

namespace {

const LocaleData kLocales[] = {
        {0x0401, "ar", "SA", 1256, 720, "ARA", "Arabic"},
        {0x0402, "bg", "BG", 1251, 866, "BGR", "Bulgarian"},
        {0x0403, "ca", "ES", 1252, 850, "CAT", "Catalan"},
        {0x0404, "zh", "TW", 950, 950, "CHT", "Chinese"},
        {0x0405, "cs", "CZ", 1250, 852, "CSY", "Czech"},
        {0x0406, "da", "DK", 1252, 850, "DAN", "Danish"},
        {0x0407, "de", "DE", 1252, 850, "DEU", "German"},
        {0x0408, "el", "GR", 1253, 737, "ELL", "Greek"},
        {0x0409, "en", "US", 1252, 437, "ENU", "English"},
        {0x040A, "es", "ES", 1252, 850, "ESP", "Spanish"},
        {0x040B, "fi", "FI", 1252, 850, "FIN", "Finnish"},
        {0x040C, "fr", "FR", 1252, 850, "FRA", "French"},
        {0x040D, "he", "IL", 1255, 862, "HEB", "Hebrew"},
        {0x040E, "hu", "HU", 1250, 852, "HUN", "Hungarian"},
        {0x040F, "is", "IS", 1252, 850, "ISL", "Icelandic"},
        {0x0410, "it", "IT", 1252, 850, "ITA", "Italian"},
        {0x0411, "ja", "JP", 932, 932, "JPN", "Japanese"},
        {0x0412, "ko", "KR", 949, 949, "KOR", "Korean"},
        {0x0413, "nl", "NL", 1252, 850, "NLD", "Dutch"},
        {0x0414, "nb", "NO", 1252, 850, "NOR", "Norwegian (Bokmal)"},
        {0x0415, "pl", "PL", 1250, 852, "PLK", "Polish"},
        {0x0416, "pt", "BR", 1252, 850, "PTB", "Portuguese"},
        {0x0418, "ro", "RO", 1250, 852, "ROM", "Romanian"},
        {0x0419, "ru", "RU", 1251, 866, "RUS", "Russian"},
        {0x041A, "hr", "HR", 1250, 852, "HRV", "Croatian"},
        {0x041B, "sk", "SK", 1250, 852, "SKY", "Slovak"},
        {0x041C, "sq", "AL", 1250, 852, "SQI", "Albanian"},
        {0x041D, "sv", "SE", 1252, 850, "SVE", "Swedish"},
        {0x041E, "th", "TH", 874, 874, "THA", "Thai"},
        {0x041F, "tr", "TR", 1254, 857, "TRK", "Turkish"},
        {0x0420, "ur", "PK", 1256, 720, "URD", "Urdu"},
        {0x0421, "id", "ID", 1252, 850, "IND", "Indonesian"},
        {0x0422, "uk", "UA", 1251, 866, "UKR", "Ukrainian"},
        {0x0423, "be", "BY", 1251, 866, "BEL", "Belarusian"},
        {0x0424, "sl", "SI", 1250, 852, "SLV", "Slovenian"},
        {0x0425, "et", "EE", 1257, 775, "ETI", "Estonian"},
        {0x0426, "lv", "LV", 1257, 775, "LVI", "Latvian"},
        {0x0427, "lt", "LT", 1257, 775, "LTH", "Lithuanian"},
        {0x0429, "fa", "IR", 1256, 720, "FAR", "Persian"},
        {0x042A, "vi", "VN", 1258, 1258, "VIT", "Vietnamese"},
        {0x042D, "eu", "ES", 1252, 850, "EUQ", "Basque"},
        {0x042F, "mk", "MK", 1251, 866, "MKI", "Macedonian"},
        {0x0436, "af", "ZA", 1252, 850, "AFK", "Afrikaans"},
        {0x0438, "fo", "FO", 1252, 850, "FOS", "Faroese"},
        {0x043E, "ms", "MY", 1252, 850, "MSL", "Malay"},
        {0x0441, "sw", "KE", 1252, 437, "SWK", "Kiswahili"},
        {0x0456, "gl", "ES", 1252, 850, "GLC", "Galician"},
        {0x0804, "zh", "CN", 936, 936, "CHS", "Chinese"},
        {0x0807, "de", "CH", 1252, 850, "DES", "German"},
        {0x0809, "en", "GB", 1252, 850, "ENG", "English"},
        {0x080A, "es", "MX", 1252, 850, "ESM", "Spanish"},
        {0x080C, "fr", "BE", 1252, 850, "FRB", "French"},
        {0x0810, "it", "CH", 1252, 850, "ITS", "Italian"},
        {0x0813, "nl", "BE", 1252, 850, "NLB", "Dutch"},
        {0x0814, "nn", "NO", 1252, 850, "NON", "Norwegian (Nynorsk)"},
        {0x0816, "pt", "PT", 1252, 850, "PTG", "Portuguese"},
        {0x081A, "sr", "CS", 1250, 852, "SRL", "Serbian"},
        {0x081D, "sv", "FI", 1252, 850, "SVF", "Swedish"},
        {0x0C04, "zh", "HK", 950, 950, "ZHH", "Chinese"},
        {0x0C07, "de", "AT", 1252, 850, "DEA", "German"},
        {0x0C09, "en", "AU", 1252, 850, "ENA", "English"},
        {0x0C0A, "es", "ES", 1252, 850, "ESN", "Spanish"},
        {0x0C0C, "fr", "CA", 1252, 850, "FRC", "French"},
        {0x0C1A, "sr", "CS", 1251, 855, "SRB", "Serbian"},
        {0x1004, "zh", "SG", 936, 936, "ZHI", "Chinese"},
        {0x1009, "en", "CA", 1252, 850, "ENC", "English"},
        {0x100C, "fr", "CH", 1252, 850, "FRS", "French"},
        {0x1409, "en", "NZ", 1252, 850, "ENZ", "English"},
        {0x1809, "en", "IE", 1252, 850, "ENI", "English"},
        {0x1C09, "en", "ZA", 1252, 437, "ENS", "English"},
        {0x2C0A, "es", "AR", 1252, 850, "ESS", "Spanish"},
};

} // namespace

const LocaleData* LocaleTable::Find(std::uint32_t lcid) {
    for (const LocaleData& locale : kLocales) {
        if (locale.lcid == lcid) {
            return &locale;
        }
    }
    return nullptr;
}

} // namespace sim
