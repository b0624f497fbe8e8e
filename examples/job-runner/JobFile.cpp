#include "JobFile.h"
#include "Errors.h"
#include "Text.h"

namespace {

/// Makes jobs of the events of a job file.
class JobFileReader : public OCXmlEvents {
public:
    JobFileReader(JobList& target, unsigned int limit) : jobs(target), defaultLimit(limit) {}

    void elementStart(const OCWideString& name) override;
    void attribute(const OCWideString& wideName, const OCWideString& raw) override;
    void characterData(const OCWideString& characters) override;
    void elementEnd() override;
    /// Looks up the prerequisites of all jobs.
    void resolvePrerequisites();

private:
    enum Element { Document, Jobs, JobElement, Argument, Variable, Input, After };

    bool hasText() const { return element == Argument || element == Variable || element == Input; }
    Element childElement(const OCAnsiString& name) const;
    void setJobAttribute(const OCAnsiString& name, const OCAnsiString& value);
    void setJobName(const OCAnsiString& value);
    void endJob();
    OCAnsiString resolve(const OCWideString& raw) const;
    OCAnsiString resolveText(const OCWideString& raw) const;
    [[noreturn]] void fail(const OCAnsiString& what) const;
    [[noreturn]] static void fail(const Job& culprit, const OCAnsiString& what);

    JobList& jobs;
    const unsigned int defaultLimit;
    OCNamedList positions{NamedListCaseSensitive, NamedListModeSorted}; ///< of the jobs' names
    Element element = Document;
    Job* job = nullptr;
    OCStringList attributes{StringListCaseSensitive, StringListModeUnsorted};
    OCWideString text;      ///< of the element that is open
    OCAnsiString reference; ///< the name of the variable or of the prerequisite
};

void JobFileReader::elementStart(const OCWideString& name) {
    element = childElement(name);
    attributes.clear();
    text.clear();
    reference.clear();
    if (element == JobElement) {
        job = &jobs.addJob();
        job->limit = defaultLimit;
    }
}

JobFileReader::Element JobFileReader::childElement(const OCAnsiString& name) const {
    if (element == Document && name == "jobs")
        return Jobs;
    if (element == Jobs && name == "job")
        return JobElement;
    if (element == JobElement) {
        if (name == "argument")
            return Argument;
        if (name == "variable")
            return Variable;
        if (name == "input")
            return Input;
        if (name == "after")
            return After;
    }
    fail("unexpected element \"" + name + "\"");
}

void JobFileReader::attribute(const OCWideString& wideName, const OCWideString& raw) {
    const OCAnsiString name(wideName);
    if (attributes.contains(name))
        fail("attribute \"" + name + "\" is given twice");
    attributes.addString(name);
    const OCAnsiString value = resolveText(raw);
    if (element == JobElement)
        setJobAttribute(name, value);
    else if ((element == Variable && name == "name") || (element == After && name == "job"))
        reference = value;
    else
        fail("unexpected attribute \"" + name + "\"");
}

void JobFileReader::setJobAttribute(const OCAnsiString& name, const OCAnsiString& value) {
    if (name == "name")
        setJobName(value);
    else if (name == "executable")
        job->executable = value;
    else if (name == "directory")
        job->directory = value;
    else if (name != "limit")
        fail("unexpected attribute \"" + name + "\"");
    else if (!parseSeconds(value, job->limit))
        fail("limit \"" + value + "\" is not a number of seconds from 0.001 to 999999");
}

void JobFileReader::setJobName(const OCAnsiString& value) {
    for (unsigned long i = 0; i < value.getLength(); ++i) {
        const char c = value[i];
        const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
        if (!letter && !(c >= '0' && c <= '9') && c != '-' && c != '_' && c != '.')
            fail("name \"" + value + "\" has other characters than letters, digits, -, _ and .");
    }
    if (value.getLength() > 64)
        fail("name \"" + value + "\" is longer than 64 characters");
    if (positions.contains(value))
        fail("name \"" + value + "\" is taken by an earlier job");
    job->name = value;
    if (value.getLength() > 0)
        positions.addElement(value, number(jobs.getCount() - 1));
}

void JobFileReader::characterData(const OCWideString& characters) {
    if (hasText()) {
        text.append(characters);
        return;
    }
    OCAnsiString visibleCharacters(characters);
    if (visibleCharacters.trim().getLength() > 0)
        fail("unexpected text \"" + visibleCharacters.left(40) + "\"");
}

void JobFileReader::elementEnd() {
    if (element == Jobs) {
        element = Document;
        return;
    }
    if (element == JobElement) {
        endJob();
        return;
    }
    if (element == Argument) {
        job->arguments.addString(resolveText(text));
    } else if (element == Variable) {
        unsigned long position = 0;
        if (reference.getLength() == 0 || reference.indexOf('=', position))
            fail("variable \"" + reference + "\" has no valid name");
        job->variables.setValue(reference, resolveText(text));
    } else if (element == Input) {
        job->input.append(resolve(text));
    } else {
        if (reference.getLength() == 0)
            fail("element \"after\" names no job");
        job->prerequisiteNames.addString(reference);
    }
    element = JobElement;
}

void JobFileReader::endJob() {
    if (job->name.getLength() == 0)
        fail("it has no name");
    if (job->executable.getLength() == 0)
        fail("it has no executable");
    job = nullptr;
    element = Jobs;
}

void JobFileReader::resolvePrerequisites() {
    for (unsigned long i = 0; i < jobs.getCount(); ++i) {
        Job& dependent = jobs.getJob(i);
        const OCStringList& names = dependent.prerequisiteNames;
        for (unsigned long j = 0; j < names.getCount(); ++j) {
            const OCAnsiString& name = names.getString(j);
            if (!positions.contains(name))
                fail(dependent, "it comes after the unknown job \"" + name + "\"");
            const unsigned long index =
                OCUnsignedIntegerConversion::fromString(positions.getValue(name), 10);
            if (index >= i)
                fail(dependent, "it comes after \"" + name + "\", which is no earlier job");
            dependent.prerequisites.addElement(jobs.getJob(index));
        }
    }
}

/// The text with its line ends and references as an XML document means them.
OCAnsiString JobFileReader::resolve(const OCWideString& raw) const {
    OCAnsiString plain(raw);
    plain.replace("\r\n", "\n").replace("\r", "\n");
    try {
        return resolveReferences(plain);
    } catch (const OXJobRunner_BadFile& failure) {
        fail(failure.getMessage());
    }
}

/// What goes to the system as a string, where a zero byte would end it.
OCAnsiString JobFileReader::resolveText(const OCWideString& raw) const {
    OCAnsiString resolved = resolve(raw);
    if (resolved.contains('\0'))
        fail("there is a zero byte in \"" + resolved + "\"");
    return resolved;
}

void JobFileReader::fail(const OCAnsiString& what) const {
    if (job)
        fail(*job, what);
    throw OXJobRunner_BadFile(what);
}

void JobFileReader::fail(const Job& culprit, const OCAnsiString& what) {
    const bool named = culprit.name.getLength() > 0;
    throw OXJobRunner_BadFile((named ? "job \"" + culprit.name + "\": " : "job without a name: ") +
                              what);
}

} // namespace

void readJobFile(const OCFilePath& path, unsigned int limit, JobList& jobs) {
    try {
        OCFileStream stream(path, FileCreateModeRead, FileShareModeRead);
        OCXmlParserSource source(stream, XmlEncodingAnsi);
        OCXmlParserReader reader(source);
        JobFileReader events(jobs, limit);
        OCXmlParser parser;
        parser.setEvents(events);
        parser.parse(reader);
        // What follows the root element is left unread.
        if (reader.more())
            throw OXJobRunner_BadFile("there is something after the end of the jobs");
        events.resolvePrerequisites();
    } catch (const OXJobRunner_BadFile& failure) {
        throw OXJobRunner_BadFile(path + ": " + failure.getMessage());
    } catch (const OXAutoException& failure) {
        throw OXJobRunner_BadFile(path, failure);
    }
}
