// The parser does what a plain one does, call for call and event for event, on documents of every
// kind.

#include "support/XmlModel.h"

#include <gtest/gtest.h>

#include <random>

namespace {

using xmlmodel::Conditions;
using xmlmodel::Log;
using xmlmodel::Run;

void expectAgreement(const std::string& document, const Conditions& conditions) {
    const auto shown = [&](const Log& log) {
        std::string text;
        for (const std::string& entry : log)
            text += entry + "\n";
        return text;
    };
    ASSERT_EQ(shown(Run(document, conditions).plain(true)),
              shown(Run(document, conditions).sharedReader()))
        << document;
    if (conditions.encoding != XmlEncodingAnsi || conditions.eventsLook || conditions.eventsConsume)
        return; // a private reader decodes bytes, and nobody can look at it
    ASSERT_EQ(shown(Run(document, conditions).plain(false)),
              shown(Run(document, conditions).privateReader()))
        << document;
}

std::string widened(const std::string& document) {
    std::string bytes;
    for (const char c : document) {
        const wchar_t wide = c;
        bytes.append(reinterpret_cast<const char*>(&wide), sizeof wide);
    }
    return bytes;
}

/// One of each construct, well-formed and malformed.
const char* const documents[] = {
    "",
    " ",
    "a",
    "<",
    "<a",
    "<a/",
    "<a/>",
    "<a />",
    "<a x='1' y=\"2\">t</a>",
    "<a x = '1'/>",
    "<a x= '1'/>",
    "<a x='1'y='2'/>",
    "<a x='1/>",
    "<a x=1/>",
    "<a x>",
    "<a x>t</a>",
    "<a>x &amp; y</a>",
    "<a></b>",
    "<a></A>",
    "<a></a ><!--c--><?p?> junk",
    "<a></a b>",
    "<a></>",
    "<t>t</>",
    "<t>t</ t>",
    "<></>",
    "< a/>",
    "<a>",
    "<a><b>",
    "<a><b></a>",
    "<a><b/><c>t</c>u<d></d></a>",
    "<a><![CDATA[<x>]]></a>",
    "<a><![CDATA[]]></a>",
    "<a><![CDATA[]]]]]></a>",
    "<a><![CDATA[]>]]",
    "<a><![CDAT[x]]></a>",
    "<a><!-- - -- ---></a>",
    "<a><!-- x --",
    "<a><!DOCTYPE b></a>",
    "<a><!x/></a>",
    "<a><?pi   some data ?></a>",
    "<a><?pi?></a>",
    "<a><?pi ?></a>",
    "<a><?pi?",
    "<a><?pi d?",
    "<a><?"
    "?></a>",
    "<a><? d?></a>",
    "<a><?p=?></a>",
    "<?xml version='1.0'?><a/>",
    "<?xml-stylesheet x?><a/>",
    " <?xml version='1.0'?><a/>",
    "<?xml",
    "<?xml ?",
    "<?pi d?><!-- c --> <a/> <!-- c --><?q?>",
    "<!-- c",
    "<!DOCTYPE a><a/>",
    "<!DOCTYPE a SYSTEM 'a.dtd'><a/>",
    "<!DOCTYPE a PUBLIC '-//x//y' \"u\" ><a/>",
    "<!DOCTYPE a PUBLIC '-//x//y'><a/>",
    "<!DOCTYPE a PUBLIC'-//x//y' 'u'><a/>",
    "<!DOCTYPE a PUBLIC x><a/>",
    "<!DOCTYPE a SYSTEM><a/>",
    "<!DOCTYPE a SYSTEM x><a/>",
    "<!DOCTYPE a SYSTEM 'x><a/>",
    "<!DOCTYPEa><a/>",
    "<!DOCTYPE><a/>",
    "<!DOCTYPE a",
    "<!DOCTYPE a [",
    "<!DOCTYPE a []",
    "<!DOCTYPE a [] ><a/>",
    "<!DOCTYPE a [<!ELEMENT a (b|c)*>]><a/>",
    "<!DOCTYPE a [<!ELEMENTa (b)>]><a/>",
    "<!DOCTYPE a [<!ELEMENT a>]><a/>",
    "<!DOCTYPE a [<!ELEMENT  >]><a/>",
    "<!DOCTYPE a [<!ELEMENT a b",
    "<!DOCTYPE a [<!ATTLIST a x CDATA #IMPLIED y (p|q) 'p'>]><a/>",
    "<!DOCTYPE a [<!ATTLIST a x IDREF #IMPLIED>]><a/>",
    "<!DOCTYPE a [<!ATTLIST a x ID #REQUIRED\ty ENTITY #IMPLIED z ENTITIES 'v' n NMTOKEN "
    "'w'>]><a/>",
    "<!DOCTYPE a [<!ATTLIST a x NMTOKENS 'v'>]><a/>",
    "<!DOCTYPE a [<!ATTLIST a x CDATA #FIXED>]><a/>",
    "<!DOCTYPE a [<!ATTLIST a x CDATA #FIXED 'v'>]><a/>",
    "<!DOCTYPE a [<!ATTLIST a x CDATA #FIXED v>]><a/>",
    "<!DOCTYPE a [<!ATTLIST a x CDATA v>]><a/>",
    "<!DOCTYPE a [<!ATTLIST a x CDATA 'v>]><a/>",
    "<!DOCTYPE a [<!ATTLIST a x NOTATION (n|(m)) 'n'>]><a/>",
    "<!DOCTYPE a [<!ATTLIST a x NOTATION(n) 'n'>]><a/>",
    "<!DOCTYPE a [<!ATTLIST a x NOTATION n>]><a/>",
    "<!DOCTYPE a [<!ATTLIST a x (n>]><a/>",
    "<!DOCTYPE a [<!ATTLIST a x FOO 'v'>]><a/>",
    "<!DOCTYPE a [<!ATTLIST a x>]><a/>",
    "<!DOCTYPE a [<!ATTLIST a >]><a/>",
    "<!DOCTYPE a [<!ATTLIST a/>]><a/>",
    "<!DOCTYPE a [<!ATTLIST>]><a/>",
    "<!DOCTYPE a [<!ENTITY e 'v'> %p; <?pi d?>]><a/>",
    "<!DOCTYPE a [<!ENTITY e \"%x;&y;'\">]><a/>",
    "<!DOCTYPE a [<!ENTITY e SYSTEM 's' NDATA n >]><a/>",
    "<!DOCTYPE a [<!ENTITY e SYSTEM 's' NDATA>]><a/>",
    "<!DOCTYPE a [<!ENTITY e SYSTEM 's' NDATA >]><a/>",
    "<!DOCTYPE a [<!ENTITY e PUBLIC 'p' 's'>]><a/>",
    "<!DOCTYPE a [<!ENTITY % p SYSTEM 'p' NDATA n>]><a/>",
    "<!DOCTYPE a [<!ENTITY % p 'v' >]><a/>",
    "<!DOCTYPE a [<!ENTITY %p 'v'>]><a/>",
    "<!DOCTYPE a [<!ENTITY e>]><a/>",
    "<!DOCTYPE a [<!ENTITY e v>]><a/>",
    "<!DOCTYPE a [<!ENTITY e 'v>]><a/>",
    "<!DOCTYPE a [<!ENTITY e 'v' x>]><a/>",
    "<!DOCTYPE a [<!ENTITY>]><a/>",
    "<!DOCTYPE a [<!NOTATION n SYSTEM 'x'>]><a/>",
    "<!DOCTYPE a [<!NOTATION n>]><a/>",
    "<!DOCTYPE a [<!NOTATION>]><a/>",
    "<!DOCTYPE a [<!NOTATION ()>]><a/>",
    "<!DOCTYPE a [<!NOTATION n x",
    "<!DOCTYPE a [<!-- c --><? x?>]><a/>",
    "<!DOCTYPE a [<!-- c",
    "<!DOCTYPE a [%;% %p;]><a/>",
    "<!DOCTYPE a [%p]><a/>",
    "<!DOCTYPE a [<!FOO>]><a/>",
    "<!DOCTYPE a [] x><a/>",
    "<!DOCTYPE a x><a/>",
    "<a \xC3\xA9='1'/>",
    "<a\xE9>\xE9</a>",
    "<<<<a",
    "<a>]]></a>",
    "<skip>a;b</skip>",
    "<a><skip/><b>;</b></a>",
};

TEST(OCXmlModel, AgreesWhereverTheBatchesFall) {
    for (const char* document : documents)
        for (const bool errorsReturn : {false, true})
            for (unsigned long shift = 0; shift <= 140; ++shift) {
                Conditions conditions;
                conditions.errorsReturn = errorsReturn;
                expectAgreement(std::string(shift, ' ') + document, conditions);
                if (HasFatalFailure())
                    return;
            }
}

TEST(OCXmlModel, AgreesOnDocumentsThatFollowADeclaration) {
    for (const char* document : documents)
        for (unsigned long shift = 115; shift <= 130; ++shift) {
            expectAgreement("<?xml" + std::string(shift, ' ') + "?>" + document, Conditions());
            if (HasFatalFailure())
                return;
        }
}

TEST(OCXmlModel, AgreesOnDocumentsCutAtEveryByte) {
    for (const std::string document : documents)
        for (const bool errorsReturn : {false, true})
            for (unsigned long length = 0; length < document.size(); ++length) {
                Conditions conditions;
                conditions.errorsReturn = errorsReturn;
                expectAgreement(document.substr(0, length), conditions);
                if (HasFatalFailure())
                    return;
            }
}

TEST(OCXmlModel, AgreesWhateverPortionsTheStreamDelivers) {
    for (const char* document : documents)
        for (const unsigned long portion : {1UL, 7UL, 100UL}) {
            Conditions conditions;
            conditions.errorsReturn = true;
            conditions.portion = portion;
            expectAgreement(document, conditions);
            if (HasFatalFailure())
                return;
        }
}

TEST(OCXmlModel, AgreesWhenAnyCallOnTheStreamFails) {
    for (const char* document : documents)
        for (unsigned long call = 0; call < 20; ++call) {
            Conditions conditions;
            conditions.errorsReturn = true;
            conditions.failingCall = call;
            expectAgreement(std::string(120, ' ') + document, conditions);
            if (HasFatalFailure())
                return;
        }
}

TEST(OCXmlModel, AgreesWhenAnyEventThrows) {
    for (const char* document : documents)
        for (unsigned long event = 0; event < 12; ++event) {
            Conditions conditions;
            conditions.errorsReturn = true;
            conditions.failingEvent = event;
            expectAgreement(document, conditions);
            if (HasFatalFailure())
                return;
        }
}

TEST(OCXmlModel, AgreesWithoutEvents) {
    for (const char* document : documents) {
        Conditions conditions;
        conditions.withEvents = false;
        expectAgreement(document, conditions);
        if (HasFatalFailure())
            return;
    }
}

TEST(OCXmlModel, AgreesOnWideCharacters) {
    for (const char* document : documents)
        for (const bool errorsReturn : {false, true})
            for (const unsigned long shift : {0UL, 100UL, 119UL, 124UL, 127UL}) {
                Conditions conditions;
                conditions.encoding = XmlEncodingWide;
                conditions.errorsReturn = errorsReturn;
                expectAgreement(widened(std::string(shift, ' ') + document), conditions);
                if (HasFatalFailure())
                    return;
            }
}

TEST(OCXmlModel, AgreesOnWideCharactersCutOff) {
    for (const char* document : documents)
        for (unsigned long cut = 1; cut <= 3; ++cut) {
            const std::string bytes = widened(document);
            if (bytes.size() < cut)
                continue;
            Conditions conditions;
            conditions.encoding = XmlEncodingWide;
            expectAgreement(bytes.substr(0, bytes.size() - cut), conditions);
            if (HasFatalFailure())
                return;
        }
}

TEST(OCXmlModel, AgreesWithAnUnknownEncoding) {
    Conditions conditions;
    conditions.encoding = static_cast<OEXmlEncoding>(2);
    conditions.errorsReturn = true;
    expectAgreement("<a/>", conditions);
}

TEST(OCXmlModel, AgreesWhenEventsLookAtTheReader) {
    for (const char* document : documents)
        for (const bool errorsReturn : {false, true})
            for (unsigned long shift = 100; shift <= 128; ++shift) {
                Conditions conditions;
                conditions.errorsReturn = errorsReturn;
                conditions.eventsLook = true;
                expectAgreement(std::string(shift, ' ') + document, conditions);
                if (HasFatalFailure())
                    return;
            }
}

TEST(OCXmlModel, AgreesWhenEventsConsumeFromTheReader) {
    for (const char* document : documents)
        for (const unsigned long shift : {0UL, 118UL, 120UL, 122UL}) {
            Conditions conditions;
            conditions.errorsReturn = true;
            conditions.eventsConsume = true;
            expectAgreement(std::string(shift, ' ') + document, conditions);
            if (HasFatalFailure())
                return;
        }
}

/// Random documents: mostly well-formed, with a few pieces out of place.
class Author {
public:
    explicit Author(unsigned seed) : random(seed) {}

    std::string document() {
        text.clear();
        faults = number(3);
        if (number(2) == 0)
            text += "<?xml version='1.0'?>";
        if (number(2) == 0)
            text += "\n<!-- " + run("ab -\n", 40) + " -->\n";
        if (number(3) == 0)
            documentType();
        element(0);
        if (number(3) == 0)
            text += run(" \n", 5) + "<!--x--> <?p q?>";
        while (faults-- > 0 && !text.empty())
            damage();
        return text;
    }

    unsigned long number(unsigned long below) {
        return std::uniform_int_distribution<unsigned long>(0, below - 1)(random);
    }

private:
    std::string run(const std::string& alphabet, unsigned long longest) {
        std::string result;
        for (unsigned long n = number(longest + 1); n > 0; --n)
            result += alphabet[number(alphabet.size())];
        return result;
    }
    std::string name() { return "n" + run("abc:-._1\xE9", number(20) == 0 ? 150 : 6); }
    std::string quoted() {
        const bool isSingle = number(2) == 0;
        const unsigned long longest = number(30) == 0 ? 6000 : 30;
        return isSingle ? "'" + run("ab \"<>&;\n", longest) + "'"
                        : "\"" + run("ab '<>&;\n", longest) + "\"";
    }
    void documentType() {
        text += "<!DOCTYPE " + name();
        if (number(2) == 0)
            text += number(2) == 0 ? " SYSTEM " + quoted() : " PUBLIC " + quoted() + " " + quoted();
        if (number(3) != 0) {
            text += " [";
            for (unsigned long n = number(6); n > 0; --n)
                switch (number(7)) {
                case 0:
                    text += "<!ELEMENT " + name() + " (a|b)*>";
                    break;
                case 1:
                    text += "<!ATTLIST " + name() + " x CDATA #IMPLIED y (p|q) 'p'>";
                    break;
                case 2:
                    text += "<!ENTITY " + name() + " " + quoted() + ">";
                    break;
                case 3:
                    text += "<!ENTITY % p SYSTEM 's'>";
                    break;
                case 4:
                    text += "<!NOTATION n SYSTEM 's'>";
                    break;
                case 5:
                    text += "%p;";
                    break;
                default:
                    text += "<?pi in the subset?>\n";
                    break;
                }
            text += "]";
        }
        text += ">";
    }
    void element(unsigned long depth) {
        const std::string own = name();
        text += "<" + own;
        for (unsigned long n = number(4); n > 0; --n)
            text += " " + run(" \n", 2) + name() + "=" + quoted();
        if (number(3) == 0) {
            text += run(" ", 2) + "/>";
            return;
        }
        text += ">";
        for (unsigned long n = depth < 6 ? number(5) : 0; n > 0; --n)
            switch (number(6)) {
            case 0:
                text += "<![CDATA[" + run("]>a<&", 20) + "]]>";
                break;
            case 1:
                text += "<!--" + run("- a>", 20) + "-->";
                break;
            case 2:
                text += "<?" + name() + " " + run("?> ab", 20) + "?>";
                break;
            case 3:
                text += run("text &amp; \n\xE9", number(30) == 0 ? 9000 : 60);
                break;
            default:
                element(depth + 1);
                break;
            }
        text += "</" + own + run(" ", 2) + ">";
    }
    void damage() {
        const unsigned long place = number(text.size());
        switch (number(3)) {
        case 0:
            text.erase(place, 1 + number(3));
            break;
        case 1:
            text.insert(place, 1, "<>/='\"!?[]-& a;%()#"[number(19)]);
            break;
        default:
            text.resize(place);
            break;
        }
    }

    std::mt19937 random;
    std::string text;
    unsigned long faults = 0;
};

TEST(OCXmlModel, AgreesOnRandomDocuments) {
    const unsigned firstSeed = 20240501;
    for (unsigned seed = firstSeed; seed < firstSeed + 1500; ++seed) {
        Author author(seed);
        const std::string document = author.document();
        Conditions conditions;
        conditions.errorsReturn = author.number(2) == 0;
        if (author.number(4) == 0)
            conditions.portion = 1 + author.number(200);
        if (author.number(4) == 0)
            conditions.failingCall = author.number(30);
        if (author.number(4) == 0)
            conditions.failingEvent = author.number(30);
        expectAgreement(document, conditions);
        conditions.eventsLook = true;
        expectAgreement(document, conditions);
        conditions.eventsLook = false;
        conditions.encoding = XmlEncodingWide;
        conditions.portion = ~0UL;
        expectAgreement(widened(document), conditions);
        if (HasFatalFailure())
            FAIL() << "seed " << seed;
    }
}

TEST(OCXmlModel, AgreesOnTextsOfEverySizeClass) {
    for (const unsigned long size : {1900UL, 2047UL, 2048UL, 2175UL, 2176UL, 4000UL, 4095UL, 4096UL,
                                     8191UL, 131071UL, 131072UL, 133000UL, 140000UL, 270000UL}) {
        std::string text(size, 'x');
        for (unsigned long i = 0; i < size; i += 7)
            text[i] = static_cast<char>('a' + i % 26);
        const std::string document = "<" + text + " " + text + "='" + text + "'>" + text +
                                     "<![CDATA[" + text + "]]><?" + text + " " + text + "?></" +
                                     text + ">";
        for (const bool cut : {false, true}) {
            Conditions conditions;
            conditions.errorsReturn = true;
            expectAgreement(cut ? document.substr(0, document.size() - 3 - size / 2) : document,
                            conditions);
            if (HasFatalFailure())
                FAIL() << "size " << size;
        }
    }
}

} // namespace
