import type { ComponentChildren } from "preact";
import { useEffect, useId, useRef } from "preact/hooks";
import { Icon } from "./icons";
import { Button, IconButton } from "./parts";
import { Said } from "./said";
import { useTask } from "./task";

interface DialogProps {
  title: string;
  onClose: () => void;
  children: ComponentChildren;
  wide?: boolean | undefined;
}

/** A modal dialogue: Escape and the cross close it, the focus goes back to where it was. */
export function Dialog({ title, onClose, children, wide }: DialogProps) {
  const ref = useRef<HTMLDialogElement>(null);
  const heading = useId();
  useEffect(() => {
    const before = document.activeElement;
    ref.current?.showModal();
    // Nothing to fill in: the reading starts at the title.
    if (!ref.current?.querySelector("[autofocus]")) ref.current?.querySelector("h2")?.focus();
    return () => {
      if (document.activeElement !== document.body) return; // somebody knew better
      const known = before instanceof HTMLElement && before.isConnected;
      (known ? before : document.querySelector("main"))?.focus();
    };
  }, []);
  return (
    <dialog
      ref={ref}
      class={wide ? "dialog wide" : "dialog"}
      aria-labelledby={heading}
      onCancel={(event) => {
        event.preventDefault();
        onClose();
      }}
      onKeyDown={(event) => event.stopPropagation()}
    >
      <header class="dialog-head">
        <h2 id={heading} tabIndex={-1}>
          {title}
        </h2>
        <IconButton kind="ghost square" icon="close" label="Fermer" onClick={onClose} />
      </header>
      {children}
    </dialog>
  );
}

interface ConfirmProps {
  title: string;
  children: ComponentChildren;
  action: string;
  danger?: boolean;
  /** What would happen is not known yet, or nothing would. */
  disabled?: boolean;
  wide?: boolean;
  onConfirm: () => Promise<void> | void;
  onClose: () => void;
}

/** Asks before something that loses or replaces what is there. */
export function Confirm({
  title,
  children,
  action,
  danger,
  disabled,
  wide,
  onConfirm,
  onClose,
}: ConfirmProps) {
  const { busy, error, run } = useTask();
  const confirm = async () => {
    await onConfirm();
    onClose();
  };
  return (
    <Dialog title={title} onClose={onClose} wide={wide}>
      <div class="dialog-body prose">{children}</div>
      <FormError text={error} />
      <footer class="dialog-foot">
        <Button autoFocus onClick={onClose}>
          Annuler
        </Button>
        <Button kind={danger ? "danger" : "primary"} disabled={disabled || busy} onClick={() => run(confirm)}>
          {action}
        </Button>
      </footer>
    </Dialog>
  );
}

interface FormProps {
  id?: string;
  class?: string;
  "aria-labelledby"?: string;
  children: ComponentChildren;
  onSubmit: () => Promise<void> | void;
}

/** A form that the page itself checks and sends. */
export function Form({ onSubmit, ...rest }: FormProps) {
  return (
    <form
      noValidate
      {...rest}
      onSubmit={(event) => {
        event.preventDefault();
        void onSubmit();
      }}
    />
  );
}

export function FormError({ text }: { text: string }) {
  return (
    <Said class="form-error" role="alert" text={text}>
      <Icon name="warning" />
      {text}
    </Said>
  );
}

interface FootProps {
  error: string;
  /** What sending the form is called. */
  action?: string;
  onClose: () => void;
}

/** What ends the form of an editor: what is wrong, and the two ways out. */
export function EditorFoot({ error, action = "Enregistrer", onClose }: FootProps) {
  return (
    <>
      <FormError text={error} />
      <footer class="dialog-foot">
        <Button onClick={onClose}>Annuler</Button>
        <Button type="submit" kind="primary">
          {action}
        </Button>
      </footer>
    </>
  );
}
