"""What goes wrong, in the words of the command."""


class Error(Exception):
    """What is wrong with what was asked for or given.

    Attributes
    ----------
    subject : str
        The parameter or input, or the path of the file; empty when the matter has no name.
    value : str
        What was given, as text.
    reason : str
        What is wrong, or what would be allowed.
    operation : str
        The operation that it is about; empty when there is none.
    """

    def __init__(
        self, message: str, subject: str = "", value: str = "", reason: str = "", operation: str = ""
    ) -> None:
        super().__init__(message)
        self.subject = subject
        self.value = value
        self.reason = reason
        self.operation = operation


class ArgumentError(Error, ValueError):
    """A value or an image that the work cannot be done with."""


def refusal(subject: str, value: object, reason: str) -> ArgumentError:
    """The error of an argument, in the form of the command's; None is no value to show."""
    text = "" if value is None else str(value)
    return ArgumentError(f"{subject}{' = ' if text else ''}{text}: {reason}", subject, text, reason)


class FileError(Error, OSError):
    """A file that cannot be read or written."""

    @property
    def filename(self) -> str:  # type: ignore[override]
        """The path of the file."""
        return self.subject
