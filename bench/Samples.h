#pragma once

#include <algorithm>
#include <cstddef>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo::bench {

/// Words of ordinary text in form C. A bar ends words where the script has no blanks.
struct TextSample {
    const char* name;
    std::u16string_view words;
};

inline constexpr TextSample textSamples[] = {
    {"English",
     u"It was late in the afternoon when the ferry left the harbour; nobody on deck had noticed the small "
     u"boat "
     u"that followed us, and I was glad of it. \u201CWe shall be there by ten,\u201D said the captain. "},
    {"German",
     u"Die Straße am Fluß war für alle da, und ähnlich schön wie früher; über den Dächern hing Rauch, den "
     u"niemand mehr roch. „Wirklich“, sagte sie, „das wäre ja noch schöner.“ "},
    {"Russian",
     u"Был уже поздний вечер, когда паром отошёл от берега; на палубе никто не заметил маленькой лодки, "
     u"которая шла за нами, и я был этому рад. «К десяти будем на месте», — сказал капитан. "},
    {"Greek",
     u"Ἦταν πλέον ἀργὰ τὸ ἀπόγευμα ὅταν τὸ πλοῖο ἄφησε τὸ λιμάνι· κανεὶς στὸ κατάστρωμα δὲν εἶχε προσέξει "
     u"τὴ μικρὴ βάρκα ποὺ μᾶς ἀκολουθοῦσε, καὶ χάρηκα γι᾿ αὐτό. "},
    {"Arabic",
     u"كان الوقت متأخرًا من بعد الظهر عندما غادرت العبّارة الميناء، ولم يلاحظ أحد على ظهرها القارب الصغير "
     u"الذي كان يتبعنا، وقد سرّني ذلك. "},
    {"Hebrew",
     u"השעה הייתה מאוחרת אחר הצהריים כאשר המעבורת עזבה את הנמל; איש על הסיפון לא הבחין בסירה הקטנה שעקבה "
     u"אחרינו, ואני שמחתי על כך. "},
    {"Hindi",
     u"दोपहर काफ़ी ढल चुकी थी जब नौका बंदरगाह से निकली; डेक पर किसी ने उस छोटी नाव को नहीं देखा जो हमारे पीछे आ "
     u"रही थी, और मुझे इससे बड़ी ख़ुशी हुई। "},
    {"Thai", u"บ่าย|คล้อย|แล้ว|เมื่อ|เรือ|ข้าม|ฟาก|ออก|จาก|ท่า|ไม่มี|ใคร|บน|ดาดฟ้า|สังเกต|เห็น|เรือ|ลำ|เล็ก|ที่|ตาม|เรา|มา|"
             u"และ|ผู้เขียน|ก็|ดีใจ|ที่|เป็น|เช่นนั้น|"},
    {"Vietnamese",
     u"Trời đã xế chiều khi chiếc phà rời bến cảng; không ai trên boong để ý đến chiếc thuyền nhỏ đang đi "
     u"theo chúng tôi, và tôi thấy mừng vì điều đó. "},
    {"Japanese",
     u"フェリー|が|港|を|出た|のは|午後|も|遅く|なって|から|だった。|甲板|に|いた|誰|ひとり|として、|後を|"
     u"ついて|くる|小さな|ボート|に|気づか|なかった。|「十時|には|着き|ますよ」|と|船長|が|言った。|"},
    {"Chinese", u"渡轮|离开|港口|的|时候，|已经|是|傍晚|了。|甲板|上|没有|人|注意到|跟|在|我们|后面|的|那条|"
                u"小船，|我|为此|感到|高兴。|船长|说：|“十点|以前|就到。”|"},
    {"Korean", u"연락선이 항구를 떠난 것은 늦은 오후였다. 갑판 위의 누구도 우리를 따라오는 작은 배를 "
               u"알아차리지 못했고, 나는 그것이 기뻤다. "},
};

/// There must be one of that name.
inline const TextSample& sampleNamed(std::string_view name) {
    return *std::ranges::find(textSamples, name, &TextSample::name);
}

/// `length` units of the sample's words in a random order: a processor foresees what repeats itself, even after hundreds
/// of letters, and real text does not.
inline std::u16string textOfSample(const TextSample& sample, std::size_t length) {
    std::vector<std::u16string_view> words;
    for (std::size_t at = 0; at < sample.words.size();) {
        const std::size_t end = std::min(sample.words.find_first_of(u" |", at), sample.words.size() - 1) + 1;
        words.push_back(sample.words.substr(at, end - at));
        if (words.back().back() == u'|')
            words.back().remove_suffix(1);
        at = end;
    }
    std::mt19937 random(1);
    std::u16string text;
    while (text.size() < length)
        text += words[random() % words.size()];
    // A mark would lose its base.
    text.resize(length - 1);
    return text + u' ';
}

} // namespace kelvo::bench
