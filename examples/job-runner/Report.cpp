#include "Report.h"
#include "Text.h"

namespace {

typedef OCXmlWriterElementAttributeList Attributes;

/// Adds an attribute, unless it is empty: the writer would make a bare name of it, which XML does
/// not have.
void add(Attributes& attributes, const char* name, const OCAnsiString& value) {
    if (value.getLength() > 0)
        attributes.addAttribute(OCAnsiString(name), escapeAttribute(value));
}

/// The text that was captured. What was cut off may have taken a part of the last character along.
OCAnsiString wholeCharacters(const Capture& capture) {
    OCAnsiString text(capture.text);
    if (capture.size > text.getLength()) {
        for (unsigned long i = 0; i < 3 && !isText(text); ++i)
            text.left(text.getLength() - 1);
    }
    return text;
}

OCAnsiString encodeBase64(const OCAnsiString& bytes) {
    OCMemoryStream source(bytes.getString(), bytes.getLength());
    OCMemoryStream target;
    OCBase64Encoder().encode(source, target);
    return target.makeString();
}

/// Writes an element that holds exactly the bytes that were captured: no indentation, no line end
/// of the writer's own. What XML cannot hold is written as Base64.
void writeCapture(OCXmlWriter& writer, const char* element, const Capture& capture) {
    if (capture.size == 0)
        return;
    OCAnsiString content = wholeCharacters(capture);
    const bool text = isText(content);
    Attributes attributes;
    add(attributes, "bytes", number(capture.size));
    if (capture.size > capture.text.getLength())
        add(attributes, "kept", number(text ? content.getLength() : capture.text.getLength()));
    if (!text)
        add(attributes, "encoding", "base64");
    content = text ? escapeContent(content) : encodeBase64(capture.text);
    const OCAnsiString name(element);
    OCXmlWriterOutput& output = writer.getOutput();
    output.setIndent(false);
    output.write("    <" + name + OCAnsiString(attributes.makeText()) + ">" + content + "</" +
                 name + ">");
    output.setIndent(true);
}

void writeJob(OCXmlWriter& writer, const Job& job) {
    Attributes attributes;
    add(attributes, "name", job.name);
    add(attributes, "status", job.getStateName());
    if (job.state == JobSkipped) {
        add(attributes, "because", job.findBlocker()->name);
        writer.emptyElement(L"job", attributes);
        return;
    }
    add(attributes, "identifier", job.identifier.getText());
    if (job.processIdentifier != 0)
        add(attributes, "process", OCStringConversion::fromInteger(job.processIdentifier, 10));
    add(attributes, "executable", job.executable);
    add(attributes, "started", formatTime(job.started));
    add(attributes, "duration", formatSeconds(job.duration));
    if (job.exitStatus >= 0)
        add(attributes, "exit", OCStringConversion::fromInteger(job.exitStatus, 10));
    writer.startElement(L"job", attributes);
    if (job.failureClass.getLength() > 0) {
        Attributes failure;
        add(failure, "class", job.failureClass);
        add(failure, "message", job.failureMessage);
        writer.emptyElement(L"exception", failure);
    }
    writeCapture(writer, "output", job.output);
    writeCapture(writer, "errors", job.errors);
    writer.endElement();
}

/// What the table says about how a job ended.
OCAnsiString describeEnd(const Job& job) {
    if (job.state == JobSkipped)
        return "\"" + job.findBlocker()->name + "\" did not succeed";
    if (job.failureClass.getLength() > 0)
        return job.failureClass + ": " + job.failureMessage;
    return "exit status " + OCStringConversion::fromInteger(job.exitStatus, 10);
}

OCAnsiString makeRow(const OCAnsiString& name, unsigned long width, const char* state,
                     const OCAnsiString& started, const OCAnsiString& seconds,
                     const OCAnsiString& end) {
    OCAnsiString row(name);
    row.padRight(' ', width) += "  " + OCAnsiString(state).padRight(' ', 9);
    row += "  " + OCAnsiString(started).padRight(' ', 8);
    row += "  " + OCAnsiString(seconds).padLeft(' ', 8) + "  " + end;
    return row + "\n";
}

} // namespace

void writeReport(OCStream& stream, const OCFilePath& jobFile, const Run& run, const JobList& jobs) {
    OCXmlWriterOutput output(stream, XmlEncodingAnsi);
    OCXmlWriter writer(output);
    writer.xmlDeclaration();
    Attributes attributes;
    add(attributes, "file", jobFile);
    add(attributes, "identifier", run.identifier.getText());
    add(attributes, "started", formatTime(run.started));
    add(attributes, "duration", formatSeconds(run.duration));
    add(attributes, "workers", number(run.workers));
    add(attributes, "succeeded", number(jobs.countState(JobSucceeded)));
    add(attributes, "failed", number(jobs.countState(JobFailed)));
    add(attributes, "skipped", number(jobs.countState(JobSkipped)));
    writer.startElement(L"report", attributes);
    for (unsigned long i = 0; i < jobs.getCount(); ++i)
        writeJob(writer, jobs.getJob(i));
    writer.closeElements();
}

OCAnsiString makeTable(const Run& run, const JobList& jobs) {
    unsigned long width = 3;
    for (unsigned long i = 0; i < jobs.getCount(); ++i) {
        const unsigned long length = jobs.getJob(i).name.getLength();
        width = length > width ? length : width;
    }
    OCAnsiString table = makeRow("job", width, "status", "started", "seconds", "end");
    for (unsigned long i = 0; i < jobs.getCount(); ++i) {
        const Job& job = jobs.getJob(i);
        const bool started = job.state != JobSkipped;
        OCAnsiString time = started ? formatTime(job.started) : "-";
        table += makeRow(job.name, width, job.getStateName(), time.right(8),
                         started ? formatSeconds(job.duration) : "-", visible(describeEnd(job)));
    }
    return table + number(jobs.getCount()) + (jobs.getCount() == 1 ? " job: " : " jobs: ") +
           number(jobs.countState(JobSucceeded)) + " succeeded, " +
           number(jobs.countState(JobFailed)) + " failed, " + number(jobs.countState(JobSkipped)) +
           " skipped; " + formatSeconds(run.duration) + " s\n";
}
