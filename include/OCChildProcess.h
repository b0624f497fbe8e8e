#ifndef ORVABASE_OCCHILDPROCESS_H
#define ORVABASE_OCCHILDPROCESS_H

#include "OCEnvironment.h"
#include "OCTemporaryFile.h"

class OCChildProcess;

/// What a child process consists of: each part knows the process that it belongs to.
class ORVABASE_EXPORT OCChildProcessObject : public OCObject {
public:
    /// A part of `owner`, which must outlive it.
    explicit OCChildProcessObject(OCChildProcess& owner) noexcept : process(owner) {}
    OCChildProcessObject(const OCChildProcessObject&) = delete;
    OCChildProcessObject& operator=(const OCChildProcessObject&) = delete;
    ~OCChildProcessObject() noexcept override;

    /// The process that this is a part of.
    OCChildProcess& getProcess() { return process; }
    const OCChildProcess& getProcess() const { return process; }

private:
    OCChildProcess& process;
};

/// What the system knows a started child by.
class ORVABASE_EXPORT OCChildProcessHandles : public OCChildProcessObject {
public:
    /// No child yet.
    explicit OCChildProcessHandles(OCChildProcess& owner) noexcept
        : OCChildProcessObject(owner), processIdentifier(0) {}
    ~OCChildProcessHandles() noexcept override;

    /// The child's process identifier, 0 before a start.
    ///
    /// Note: it stays when the child has ended, and the system may give it to another process.
    int getProcessIdentifier() const { return processIdentifier; }
    /// Sets the identifier.
    void setProcessIdentifier(int identifier) { processIdentifier = identifier; }

protected:
    /// Does nothing: a child is neither waited for nor ended.
    void destroy() noexcept {}

private:
    int processIdentifier;
};

/// Options of a start. There are none yet.
class ORVABASE_EXPORT OCChildProcessOptions : public OCChildProcessObject {
public:
    /// The options of `owner`.
    explicit OCChildProcessOptions(OCChildProcess& owner) noexcept : OCChildProcessObject(owner) {}
    ~OCChildProcessOptions() noexcept override;
};

/// What `execve` is given at one start: made before the child is, so that the child does not have
/// to allocate memory.
class ORVABASE_EXPORT OCChildProcessContext : public OCChildProcessObject {
public:
    /// Copies the process's environment, filename and arguments.
    /// @throws OXMemory_AllocationError
    explicit OCChildProcessContext(OCChildProcess& owner);
    ~OCChildProcessContext() noexcept override;

    /// The `NAME=VALUE` strings and a null pointer. They last as long as the object.
    char** acquireEnvironment() { return environment.getBuffer(); }
    /// The execution filename, the arguments and a null pointer. They last as long as the object.
    char** acquireArguments() { return arguments.getBuffer(); }

protected:
    /// The steps of the construction.
    void initialize();
    void initializeArguments();

private:
    OCEnvironmentBufferArray environment;
    OCStringArray arguments;
};

/// A file that stands for one of the child's standard streams.
class ORVABASE_EXPORT OCChildProcessStream : public OCChildProcessObject {
public:
    /// Creates the file.
    /// @throws OXTemporaryFile_CreateError
    explicit OCChildProcessStream(OCChildProcess& owner);
    ~OCChildProcessStream() noexcept override;

    /// The file. The child reads or writes it from the position that it has at the start, and moves
    /// that position.
    OCTemporaryFileStream& getStream() { return stream; }
    const OCTemporaryFileStream& getStream() const { return stream; }

private:
    OCTemporaryFileStream stream;
};

/// The child's standard input, descriptor 0.
class ORVABASE_EXPORT OCChildProcessStream_StandardInput : public OCChildProcessStream {
public:
    using OCChildProcessStream::OCChildProcessStream;
    ~OCChildProcessStream_StandardInput() noexcept override;

    /// Makes the descriptor 0 of the calling process that of the stream to which the child process
    /// diverts its standard input, or leaves it as it is when there is none. False when that is
    /// refused. Called in the child.
    bool duplicateHandle();
};

/// The child's standard output, descriptor 1.
class ORVABASE_EXPORT OCChildProcessStream_StandardOutput : public OCChildProcessStream {
public:
    using OCChildProcessStream::OCChildProcessStream;
    ~OCChildProcessStream_StandardOutput() noexcept override;

    /// The same for descriptor 1 and the standard output.
    bool duplicateHandle();
};

/// The child's standard error, descriptor 2.
class ORVABASE_EXPORT OCChildProcessStream_StandardError : public OCChildProcessStream {
public:
    using OCChildProcessStream::OCChildProcessStream;
    ~OCChildProcessStream_StandardError() noexcept override;

    /// The same for descriptor 2 and the standard error.
    bool duplicateHandle();
};

/// Runs an executable: feeds its standard input from a file, collects its standard output and
/// standard error in files, and waits for it with a time limit.
///
/// The files are temporary ones of this object. Write the input, and go back to its beginning,
/// before the start; read the output and the errors from their beginning when the child has ended.
/// Derived classes may supply other streams, leave a standard stream alone, and cut a wait short.
///
/// Whatever goes wrong in the child before the executable runs (no such directory, no such file)
/// ends the child with signal 6, `SIGABRT`.
///
/// For use by one thread at a time.
///
///     OCChildProcess process;
///     process.setExecutionFilename("/usr/bin/sort");
///     process.getExecutionArguments().addString("-r");
///     OCTemporaryFileStream& input = process.getStandardInput().getStream();
///     input.writeBuffer("a\nb\n", 4);
///     input.setPosition(0);
///     process.execute();      // 0
///     OCTemporaryFileStream& output = process.getStandardOutput().getStream();
///     output.setPosition(0);
///     OCStringUtilities::importStream(output);      // "b\na\n"
class ORVABASE_EXPORT OCChildProcess : public OCObject {
public:
    /// Nothing to run yet, the environment of this process, and three empty files.
    /// @throws OXTemporaryFile_CreateError, OXEnvironmentBlock_ReadProcessEnvironment,
    /// OXMemory_AllocationError
    OCChildProcess();
    OCChildProcess(const OCChildProcess&) = delete;
    OCChildProcess& operator=(const OCChildProcess&) = delete;
    /// Removes the files.
    ///
    /// Note: a running child is neither waited for nor ended.
    ~OCChildProcess() override;

    /// The parts of the process, which stay its own.
    OCChildProcessHandles& getHandles() { return handles; }
    const OCChildProcessHandles& getHandles() const { return handles; }
    OCChildProcessOptions& getOptions() { return options; }
    const OCChildProcessOptions& getOptions() const { return options; }
    OCChildProcessStream_StandardError& getStandardError() { return standardError; }
    const OCChildProcessStream_StandardError& getStandardError() const { return standardError; }
    OCChildProcessStream_StandardInput& getStandardInput() { return standardInput; }
    const OCChildProcessStream_StandardInput& getStandardInput() const { return standardInput; }
    OCChildProcessStream_StandardOutput& getStandardOutput() { return standardOutput; }
    const OCChildProcessStream_StandardOutput& getStandardOutput() const { return standardOutput; }

    /// The child's environment variables, at first those of this process that are not empty.
    OCEnvironmentBlock& getEnvironment() { return environment; }
    const OCEnvironmentBlock& getEnvironment() const { return environment; }

    /// The directory into which the child changes before the executable starts; when it is empty,
    /// as at first, the child stays in that of this process.
    const OCFilePath& getExecutionDirectory() const { return executionDirectory; }
    /// Whether a directory is set.
    bool hasExecutionDirectory() const { return executionDirectory.getLength() != 0; }
    /// @throws OXMemory_AllocationError; the directory is then as it was.
    void setExecutionDirectory(const OCFilePath& directory);

    /// The executable, which is also the first of the strings that its `main` gets.
    ///
    /// Note: `PATH` is not searched, and a relative name is looked up from the execution directory.
    const OCFilePath& getExecutionFilename() const { return executionFilename; }
    /// @throws OXMemory_AllocationError; the filename is then as it was.
    void setExecutionFilename(const OCFilePath& filename);

    /// The arguments after the executable's name, none at first.
    OCStringList& getExecutionArguments() { return executionArguments; }
    const OCStringList& getExecutionArguments() const { return executionArguments; }

    /// Starts the executable, waits for at most 30 seconds and returns its exit status, 0 to 255.
    ///
    /// Note: nothing keeps a second call from starting a second child; the first one's identifier
    /// is lost then. A child that was killed here stays a zombie until someone waits for it.
    /// @throws OXChildProcess_ExecuteError when no process could be made;
    /// OXChildProcess_UnexpectedSignal when a signal ended the child, also when it could not be
    /// started; OXChildProcess_WaitTimeout when the time is up or `stopWaiting` said so;
    /// OXChildProcess_WaitFailed. Before all but the first the child is killed. Exceptions of other
    /// families leave it running: OXCountdown_AcquireTimeError, OXMemory_AllocationError, those of
    /// an own `stopWaiting`.
    int execute();

    /// Starts the executable and returns at once.
    ///
    /// The child gets the process's streams, unless they are diverted, and all open descriptors
    /// that are not marked to be closed. Between the making of the process and the start of the
    /// executable it only changes its directory and duplicates descriptors.
    /// @throws OXChildProcess_ExecuteError when no process could be made, OXMemory_AllocationError
    void processCreate();
    /// Makes a process by `fork`: returns its identifier, and 0 in the new process itself.
    /// @throws OXChildProcess_ExecuteError with the system's text.
    int processFork();
    /// In the child: changes into the execution directory, if there is one.
    /// @throws OXChildProcess_ExecuteError with the system's text.
    void processPrepare();
    /// In the child: puts the streams in place and runs the executable. Returns only when that
    /// fails: false.
    bool processOverlay(OCChildProcessContext& context);
    /// Waits for the child's end for at most `timeoutMilliseconds`, in steps of 20 milliseconds.
    /// True, with the child's status from 0 to 255, when it has ended by itself; false, with
    /// `exitStatus` as it was, when the time is up or `stopWaiting` said so. A limit of 0 is up at
    /// once.
    /// @throws OXChildProcess_UnexpectedSignal when a signal ended the child;
    /// OXChildProcess_WaitFailed, also when no child was started or when it was waited for already;
    /// OXCountdown_AcquireTimeError
    bool processWait(int& exitStatus, unsigned int timeoutMilliseconds);
    /// Looks once, without waiting, whether the child has ended.
    /// @throws OXChildProcess_UnexpectedSignal, OXChildProcess_WaitFailed as above.
    bool processWait(int& exitStatus) { return processRequest(exitStatus); }
    bool processRequest(int& exitStatus);
    /// Ends the child by `SIGKILL`. Its end remains to be waited for. Does nothing when no child
    /// was started.
    void processKill();

    /// Says which stream the child's standard error is to be: stores it through `stream` and
    /// returns true, or returns false to leave the child that of this process. The stream stays the
    /// caller's. Called in the child, where memory should not be allocated.
    ///
    /// Note: the streams are put in place one after the other: error, input, output. A stream over
    /// descriptor 0, 1 or 2 means what that descriptor is when its turn comes, so for the standard
    /// output a stream over descriptor 2 is where the child's errors go. Only the files of this
    /// object are moved out of the way when they have such a number.
    virtual bool divertStandardError(OCHandleStream** stream);
    /// The same for the standard input.
    virtual bool divertStandardInput(OCHandleStream** stream);
    /// The same for the standard output.
    virtual bool divertStandardOutput(OCHandleStream** stream);
    /// Asked before each look at the child: true ends the wait. False unless overridden. Called by
    /// the thread that waits, so what another thread sets for it must be an atomic, say.
    virtual bool stopWaiting();

    /// The steps of the construction: read the environment of this process.
    void initialize();
    void initializeEnvironment();

private:
    OCChildProcessHandles handles;
    OCChildProcessOptions options;
    OCChildProcessStream_StandardError standardError;
    OCChildProcessStream_StandardInput standardInput;
    OCChildProcessStream_StandardOutput standardOutput;
    OCEnvironmentBlock environment;
    OCFilePath executionDirectory;
    OCFilePath executionFilename;
    OCStringList executionArguments;
};

/// The family of the child process's failures.
class ORVABASE_EXPORT OXChildProcess : public OXAutoException {
public:
    ~OXChildProcess() noexcept override;

protected:
    OXChildProcess();
};

/// "Executing the child process failed", with the system's text for `code`.
class ORVABASE_EXPORT OXChildProcess_ExecuteError : public OXChildProcess {
public:
    explicit OXChildProcess_ExecuteError(unsigned int code);
    ~OXChildProcess_ExecuteError() noexcept override;
};

/// "Unexpected signal in child process", with the signal's number.
class ORVABASE_EXPORT OXChildProcess_UnexpectedSignal : public OXChildProcess {
public:
    explicit OXChildProcess_UnexpectedSignal(unsigned int number);
    ~OXChildProcess_UnexpectedSignal() noexcept override;
};

/// "Waiting for the child process failed".
class ORVABASE_EXPORT OXChildProcess_WaitFailed : public OXChildProcess {
public:
    OXChildProcess_WaitFailed();
    ~OXChildProcess_WaitFailed() noexcept override;
};

/// "Waiting for the child process timed out".
class ORVABASE_EXPORT OXChildProcess_WaitTimeout : public OXChildProcess {
public:
    OXChildProcess_WaitTimeout();
    ~OXChildProcess_WaitTimeout() noexcept override;
};

#endif
